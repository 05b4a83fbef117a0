#include "document/document_hooks.hpp"

namespace vx {

DocumentLanguage plainTextLanguage() { return {"Plain Text", "txt", "txt"}; }

}  // namespace vx

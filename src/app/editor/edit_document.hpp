// Documents opened in a language the caller names rather than the one the file's name picks
// (`vx edit --language`, keystroke cases with a `language` file).
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "document/single_file_document.hpp"

namespace vx {
struct VXLanguage;
}

namespace vx::editor {

// A new document whose language is `language` whatever it is read from; the chooser lives as
// long as the program.
std::unique_ptr<VXSingleFileDocument> newDocumentInLanguage(const VXLanguage& language);

// A document holding `text` (UTF-8) that belongs to no file, in `language` when given.
std::unique_ptr<VXSingleFileDocument> documentWithText(std::string_view text, const VXLanguage* language);

}  // namespace vx::editor

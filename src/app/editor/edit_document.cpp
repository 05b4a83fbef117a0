#include "app/editor/edit_document.hpp"

#include <map>

#include "app/editor/files.hpp"
#include "syntax/language_chooser.hpp"

namespace vx::editor {
namespace {

class FixedLanguageChooser final : public LanguageChooser {
public:
    explicit FixedLanguageChooser(DocumentLanguage language) : m_language(std::move(language)) {}
    std::optional<DocumentLanguage> detectLanguageForFilePath(const std::string&, const VXTextStorage&) override {
        return m_language;
    }

private:
    DocumentLanguage m_language;
};

}  // namespace

std::unique_ptr<VXSingleFileDocument> newDocumentInLanguage(const VXLanguage& language) {
    static std::map<std::string, std::unique_ptr<FixedLanguageChooser>> choosers;
    auto& chooser = choosers[language.identifier];
    if (!chooser)
        chooser = std::make_unique<FixedLanguageChooser>(VXSyntaxLanguageChooser::shared().documentLanguage(language));
    auto document = std::make_unique<VXSingleFileDocument>();
    document->setLanguageChooser(chooser.get());
    return document;
}

std::unique_ptr<VXSingleFileDocument> documentWithText(std::string_view text, const VXLanguage* language) {
    auto document = language ? newDocumentInLanguage(*language) : newDocument();
    std::string error;
    if (!document->readFromData(text, "", &error)) return nullptr;
    return document;
}

}  // namespace vx::editor

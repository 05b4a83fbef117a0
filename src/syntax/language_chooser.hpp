// The document's language chooser, answered from the truffles' languages: plug
// `VXSyntaxLanguageChooser::shared()` into a VXSingleFileDocument (setLanguageChooser) and it
// opens files in the language detectLanguageForFilePath picks.
#pragma once

#include "document/document_hooks.hpp"
#include "syntax/language_catalog.hpp"

namespace vx {

class VXSyntaxLanguageChooser final : public LanguageChooser {
public:
    static VXSyntaxLanguageChooser& shared();
    explicit VXSyntaxLanguageChooser(const VXLanguageCatalog& catalog) : m_catalog(catalog) {}

    std::optional<DocumentLanguage> detectLanguageForFilePath(const std::string& path,
                                                              const VXTextStorage& contents) override;
    DocumentLanguage plainTextLanguage() override;

    // The document's view of a language: name, root scope, identifier.
    DocumentLanguage documentLanguage(const VXLanguage& language) const;

private:
    const VXLanguageCatalog& m_catalog;
};

}  // namespace vx

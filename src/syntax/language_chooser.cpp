#include "syntax/language_chooser.hpp"

#include <algorithm>

#include "document/text_storage.hpp"

namespace vx {

VXSyntaxLanguageChooser& VXSyntaxLanguageChooser::shared() {
    static VXSyntaxLanguageChooser chooser(VXLanguageCatalog::sharedCatalog());
    return chooser;
}

DocumentLanguage VXSyntaxLanguageChooser::documentLanguage(const VXLanguage& language) const {
    DocumentLanguage out{language.name, "", language.identifier};
    if (VXSyntaxRuleset* ruleset = m_catalog.rulesetForLanguage(language)) out.rootScope = ruleset->scope.toString();
    return out;
}

std::optional<DocumentLanguage> VXSyntaxLanguageChooser::detectLanguageForFilePath(const std::string& path,
                                                                                    const VXTextStorage& contents) {
    // Language choice looks at the head of the text only.
    const std::u16string head = contents.substring({0, std::min<uint64_t>(contents.length(), 500)});
    const VXLanguage* language = m_catalog.detectLanguageForFilePath(path, head);
    if (!language) return std::nullopt;
    return documentLanguage(*language);
}

DocumentLanguage VXSyntaxLanguageChooser::plainTextLanguage() {
    const VXLanguage* plain = m_catalog.plainText();
    return plain ? documentLanguage(*plain) : vx::plainTextLanguage();
}

}  // namespace vx

// Stand-ins for the layers above the document (views, highlighter, language chooser, alerts).
#pragma once

#include <string>
#include <vector>

#include "document/document_hooks.hpp"
#include "document/text_storage.hpp"

namespace vx::test {

struct FakeView : DocumentView {
    Range selection;
    bool decoherent = true;
    bool folded = false;
    int changes = 0;
    Range selectedRange() const override { return selection; }
    void setSelectedRange(Range range) override { selection = range; }
    bool isDecoherent() const override { return decoherent; }
    bool isFolded() const override { return folded; }
    void textStorageWasChanged() override { ++changes; }
};

struct FakeHighlighter : HighlightingHook {
    struct Call {
        Range range;
        int64_t change;
        unsigned mask;
        bool fully;
    };
    std::vector<Call> calls;
    void recomputeCache(Range range, int64_t change, unsigned mask, bool fully) override {
        calls.push_back({range, change, mask, fully});
    }
    std::vector<std::string> scopesAtLocation(uint64_t) override { return {"source.test", "string.quoted"}; }
    std::optional<TextAttributes> defaultZoneAttributes() override { return TextAttributes{{"foreground", "#112233ff"}}; }
};

struct FakeChooser : LanguageChooser {
    std::optional<DocumentLanguage> answer = DocumentLanguage{"Markdown", "text.markdown", "net.example.markdown"};
    std::vector<std::string> askedPaths;
    std::optional<DocumentLanguage> detectLanguageForFilePath(const std::string& path, const VXTextStorage&) override {
        askedPaths.push_back(path);
        return answer;
    }
};

struct FakeAlerts : AlertPresenter {
    size_t answer = 0;
    std::vector<std::string> titles, messages;
    std::vector<std::vector<std::string>> buttons;
    size_t runCriticalAlert(const std::string& title, const std::string& message,
                            const std::vector<std::string>& choices) override {
        titles.push_back(title);
        messages.push_back(message);
        buttons.push_back(choices);
        return answer;
    }
};

}  // namespace vx::test

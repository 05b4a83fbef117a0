#include "app/editor/files.hpp"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <functional>
#include <map>

#include "app/editor/editor.hpp"
#include "app/editor/file_location.hpp"
#include "app/editor/highlighting.hpp"
#include "app/editor/quick_open_panel.hpp"
#include "syntax/language_chooser.hpp"
#include "document/single_file_document.hpp"
#include "app/tui/utf8.hpp"
#include "platform/atomic_file.hpp"
#include "platform/file_cache.hpp"
#include "platform/file_stamp.hpp"
#include "platform/paths.hpp"
#include "selfml/sfonode.hpp"

namespace vx::editor {
namespace {

namespace fs = std::filesystem;

// A folder's file list stops here; a folder this big wants the project's quick open.
constexpr size_t kFileListLimit = 20000;

// The samples `vx` opens with no arguments: copies in the user data folder, so trying the editor
// out never changes the bundled originals.
std::string samplesDirectory() {
    std::string copies = userDataDirectory() + "/Samples";
    std::error_code error;
    fs::path bundled = (fs::path(bundledTrufflesDirectory()) / ".." / "samples").lexically_normal();
    if (makeDirectories(copies)) {
        for (const auto& file : fs::directory_iterator(bundled, error))
            fs::copy_file(file.path(), fs::path(copies) / file.path().filename(), fs::copy_options::skip_existing, error);
    }
    return copies;
}

std::string absolutePath(const std::string& path) {
    std::error_code error;
    fs::path absolute = fs::absolute(expandTilde(path), error);
    return error ? path : absolute.lexically_normal().string();
}

// The folder a Save As starts in, written with one slash at its end.
std::string folderForSaving(const Tab& tab) {
    std::string folder = tab.path().empty() ? absolutePath(".") : fs::path(tab.path()).parent_path().string();
    while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
    return folder == "/" ? folder : folder + "/";
}

Tab* tabWithPath(Editor& editor, const std::string& path) {
    for (size_t i = 0; i < editor.tabCount(); ++i)
        if (editor.tab(i).path() == path) return &editor.tab(i);
    return nullptr;
}

std::optional<size_t> indexOfTab(Editor& editor, const Tab* tab) {
    for (size_t i = 0; i < editor.tabCount(); ++i)
        if (&editor.tab(i) == tab) return i;
    return std::nullopt;
}

// A self-ml string that holds any text: backticks, with a backtick written twice.
std::string selfmlString(std::string_view text) {
    std::string out = "`";
    for (char c : text) {
        if (c == '`') out += '`';
        out += c;
    }
    return out + "`";
}

using Then = std::function<void(Editor&)>;

// Saves once the user has agreed to what saving would do that they may not expect: writing a
// text that was valid in no encoding as UTF-8, and overwriting a version of the file that another
// program wrote since it was read. `path` empty: the tab's own file.
void saveAsking(Editor& editor, Tab& tab, const std::string& path, Then then) {
    Tab* target = &tab;
    VXSingleFileDocument& document = tab.document();
    if (document.needsConfirmationToSave()) {
        editor.showModal(std::make_unique<Alert>(
            "\u201c" + tab.displayName() + "\u201d was not valid text in any encoding",
            "It was opened as Mac OS Roman. Saving writes it as UTF-8, which changes its bytes.",
            std::vector<std::string>{"Save as UTF-8", "Cancel"}, 1, [target, path, then](Editor& e, int button) {
                if (button != 0 || !indexOfTab(e, target)) return;
                target->document().acceptSavingAsUTF8();
                saveAsking(e, *target, path, then);
            }));
        return;
    }
    const bool ownFile = path.empty() || (document.fileURL() && *document.fileURL() == path);
    if (ownFile && document.fileChangedOnDisk()) {
        editor.showModal(std::make_unique<Alert>(
            "\u201c" + tab.displayName() + "\u201d has been changed by another application",
            "The file on disk is not the version that was opened. Saving replaces it with the text here.",
            std::vector<std::string>{"Save Anyway", "Cancel"}, 1, [target, path, then](Editor& e, int button) {
                if (button != 0 || !indexOfTab(e, target)) return;
                target->document().setDiskStamp(fileStampForPath(target->path()));
                saveAsking(e, *target, path, then);
            }));
        return;
    }
    if (saveTab(editor, tab, path) && then) then(editor);
}

void askSaveAs(Editor& editor, Tab& tab, Then then) {
    std::string initial = tab.path().empty() ? folderForSaving(tab) : tab.path();
    Tab* target = &tab;
    editor.showModal(std::make_unique<LinePrompt>("Save as: ", initial, [target, then](Editor& e, std::optional<std::string> given) {
        if (!given || given->empty() || !indexOfTab(e, target)) return;
        const std::string path = absolutePath(*given);
        std::error_code error;
        if (path != target->path() && fs::exists(path, error)) {
            // Another file is there: it goes only when the user says so.
            e.showModal(std::make_unique<Alert>(
                "\u201c" + fs::path(path).filename().string() + "\u201d already exists. Do you want to replace it?",
                "A file with that name is already in " + abbreviatingWithTildeInPath(fs::path(path).parent_path().string()) +
                    ". Replacing it overwrites its contents.",
                std::vector<std::string>{"Replace", "Cancel"}, 1, [target, path, then](Editor& e2, int button) {
                    if (button == 0 && indexOfTab(e2, target)) saveAsking(e2, *target, path, then);
                }));
            return;
        }
        saveAsking(e, *target, path, then);
    }));
}

void saveThen(Editor& editor, Tab& tab, Then then) {
    if (tab.path().empty()) return askSaveAs(editor, tab, std::move(then));
    saveAsking(editor, tab, {}, std::move(then));
}

// Closes a tab, first asking what to do with unsaved changes; `then` runs once it is closed.
void closeTabAsking(Editor& editor, Tab& tab, std::function<void(Editor&)> then) {
    auto close = [target = &tab, then](Editor& e) {
        if (auto index = indexOfTab(e, target)) e.closeTab(*index);
        if (then) then(e);
    };
    if (!tab.isModified()) return close(editor);
    if (auto index = indexOfTab(editor, &tab)) editor.activateTab(*index);
    editor.showModal(std::make_unique<Alert>(
        "Save changes to \u201c" + tab.displayName() + "\u201d?", "Your changes will be lost if you don't save them.",
        std::vector<std::string>{"Save", "Don't Save", "Cancel"}, 2, [target = &tab, close](Editor& e, int button) {
            if (!indexOfTab(e, target)) return;
            if (button == 0) saveThen(e, *target, close);
            else if (button == 1) close(e);
        }));
}

// Quits once every tab with unsaved changes has been saved or given up, one prompt at a time.
void quitAsking(Editor& editor) {
    for (size_t i = 0; i < editor.tabCount(); ++i) {
        if (editor.tab(i).isModified()) return closeTabAsking(editor, editor.tab(i), quitAsking);
    }
    editor.requestQuit();
}

std::vector<std::string> filesUnder(const std::string& folder) {
    std::vector<std::string> files;
    std::error_code error;
    fs::recursive_directory_iterator it(folder, fs::directory_options::skip_permission_denied, error), end;
    for (; !error && it != end; it.increment(error)) {
        std::string name = it->path().filename().string();
        if (!name.empty() && name[0] == '.') {
            if (it->is_directory(error)) it.disable_recursion_pending();
            continue;
        }
        if (it->is_regular_file(error)) files.push_back(it->path().lexically_relative(folder).string());
        if (files.size() >= kFileListLimit) break;
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace

std::unique_ptr<VXSingleFileDocument> newDocument() {
    auto document = std::make_unique<VXSingleFileDocument>();
    document->setLanguageChooser(&VXSyntaxLanguageChooser::shared());
    return document;
}

bool openFile(Editor& editor, const std::string& givenPath) {
    std::string path = absolutePath(givenPath);
    if (Tab* open = tabWithPath(editor, path)) {
        editor.activateTab(*indexOfTab(editor, open));
        return true;
    }
    auto document = newDocument();
    struct stat info{};
    if (::stat(path.c_str(), &info) == 0) {
        std::string error;
        if (!document->readFromURL(path, "", &error)) {
            editor.showError(error.empty() ? "Cannot open " + givenPath : error);
            return false;
        }
        const bool invalid = document->wasValidInNoEncoding();
        editor.openTab(std::make_unique<Tab>(std::move(document)));
        if (invalid)
            editor.showError("\u201c" + fs::path(path).filename().string() +
                             "\u201d is not valid text in any encoding: it is shown as Mac OS Roman, and saving asks first.");
    } else {
        document->prepareForNewFile(path);
        editor.showMessage("New file: " + givenPath);
        editor.openTab(std::make_unique<Tab>(std::move(document), path));
    }
    editor.revealCaret();
    return true;
}

void showFileList(Editor& editor, const std::string& folder) {
    std::string root = absolutePath(folder);
    auto files = filesUnder(root);
    editor.showModal(std::make_unique<ListMenu>("Open a file in " + root, files, 0, [root, files](Editor& e, int item) {
        if (item >= 0) openFile(e, root + "/" + files[static_cast<size_t>(item)]);
    }));
}

void openStartupPaths(Editor& editor, const std::vector<std::string>& paths) {
    if (paths.empty()) {
        std::string samples = samplesDirectory();
        for (const char* name : {"welcome.selfml", "hello.c"}) openFile(editor, samples + "/" + name);
        editor.activateTab(0);
        editor.showMessage("Welcome to Vellumex. F1 lists the keys; Ctrl-Q quits.");
        return;
    }
    std::string folder;
    auto exists = [](const std::string& path) {
        std::error_code error;
        return fs::exists(path, error);
    };
    std::optional<size_t> first;
    for (const auto& location : fileLocationsFromArguments(paths, exists)) {
        std::error_code error;
        if (fs::is_directory(location.path, error)) {
            folder = location.path;
            continue;
        }
        if (!openFile(editor, location.path)) continue;
        if (!first) first = editor.activeIndex();
        if (location.line) goToLocation(*editor.activeTab(), *location.line, location.column.value_or(1));
    }
    if (editor.tabCount()) editor.activateTab(first.value_or(0));
    editor.revealCaret();
    // A folder opens as a project, in quick open.
    if (!folder.empty() && openProjectForPath(folder)) showQuickOpen(editor);
}

void goToLocation(Tab& tab, uint64_t line, uint64_t column) {
    const TextBuffer& text = tab.text();
    const uint64_t index = std::min(std::max<uint64_t>(line, 1), text.lineCount()) - 1;
    const Range content = text.lineContentRange(index);
    const uint64_t offset = content.location + std::min(std::max<uint64_t>(column, 1) - 1, content.length);
    tab.setSelection(Selection::caretAt(offset));
}

std::string expandTilde(const std::string& path) {
    if (path.empty() || path[0] != '~') return path;
    const size_t slash = path.find('/');
    const std::string user = path.substr(1, slash == std::string::npos ? std::string::npos : slash - 1);
    std::string home;
    if (user.empty()) {
        const char* variable = std::getenv("HOME");
        if (variable && *variable) home = variable;
        else if (const passwd* entry = ::getpwuid(::getuid())) home = entry->pw_dir;
    } else if (const passwd* entry = ::getpwnam(user.c_str())) {
        home = entry->pw_dir;
    }
    if (home.empty()) return path;  // no such user: the name is taken as it stands
    return slash == std::string::npos ? home : home + path.substr(slash);
}

bool saveTab(Editor& editor, Tab& tab, const std::string& givenPath) {
    std::string path = givenPath.empty() ? tab.path() : absolutePath(givenPath);
    VXSingleFileDocument& document = tab.document();
    bool saveAs = !document.fileURL() || *document.fileURL() != path;
    std::string error;
    if (!document.saveToURL(path, document.fileType(), saveAs ? VXSingleFileDocument::SaveOperation::SaveAs
                                                              : VXSingleFileDocument::SaveOperation::Save, &error)) {
        editor.showError(error.empty() ? "Cannot save " + path : error);
        return false;
    }
    tab.documentDidChange();
    editor.showMessage("Saved " + path);
    return true;
}

std::string recoveryDirectory() {
    return userDataDirectory() + "/Recovery";
}

int writeRecoveryFiles(Editor& editor) {
    std::string folder = recoveryDirectory();
    // One name per buffer for the life of the process: writing again replaces what was written
    // before, so a buffer never leaves two recovery files.
    static const auto started = std::chrono::duration_cast<std::chrono::milliseconds>(
                                    std::chrono::system_clock::now().time_since_epoch()).count();
    int written = 0;
    for (size_t i = 0; i < editor.tabCount(); ++i) {
        Tab& tab = editor.tab(i);
        if (!tab.isModified()) continue;
        if (!written && !makeDirectories(folder)) return 0;
        // Numbered in the order the buffers were first kept, which is the order they are offered in.
        static std::map<const VXSingleFileDocument*, size_t> numbers;
        const size_t number = numbers.try_emplace(&tab.document(), numbers.size()).first->second;
        char buffer[32];
        std::snprintf(buffer, sizeof buffer, "%06zu", number);
        std::string base = folder + "/" + std::to_string(started) + "-" + std::to_string(::getpid()) + "-" + buffer;
        std::string info = "(recovered (path " + selfmlString(tab.path()) + ") (name " + selfmlString(tab.displayName()) + "))\n";
        // The text first: an entry is only offered once its description exists.
        if (writeFileAtomically(base + ".text", utf8FromUtf16(tab.text().text()), mode_t{0600}).ok &&
            writeFileAtomically(base + ".selfml", info, mode_t{0600}).ok)
            ++written;
    }
    return written;
}

void offerRecoveredFiles(Editor& editor, std::function<void(Editor&)> then) {
    struct Entry {
        std::string base, path, name;
    };
    std::vector<Entry> entries;
    std::error_code error;
    for (const auto& file : fs::directory_iterator(recoveryDirectory(), error)) {
        if (file.path().extension() != ".selfml") continue;
        auto info = SFONode::nodeWithContentsOfFile(file.path().string());
        auto recovered = info->nodeForKey("recovered");
        if (!recovered) continue;
        std::string base = (file.path().parent_path() / file.path().stem()).string();
        entries.push_back({base, recovered->valueForKey("path").value_or(""), recovered->valueForKey("name").value_or("untitled")});
    }
    if (entries.empty()) {
        if (then) then(editor);
        return;
    }
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.base < b.base; });
    std::string names;
    for (const auto& entry : entries) names += (names.empty() ? "" : ", ") + (entry.path.empty() ? entry.name : entry.path);
    auto remove = [entries] {
        for (const auto& entry : entries) {
            std::error_code ignored;
            fs::remove(entry.base + ".selfml", ignored);
            fs::remove(entry.base + ".text", ignored);
        }
    };
    editor.showModal(std::make_unique<Alert>(
        "Unsaved changes were kept", "When Vellumex last stopped, it kept unsaved changes to " + names + ". Open them now?",
        std::vector<std::string>{"Open", "Discard", "Later"}, 2, [entries, remove, then](Editor& e, int button) {
            if (button == 0) {
                for (const auto& entry : entries) {
                    auto text = readWholeFile(entry.base + ".text");
                    if (!text) continue;
                    Tab* tab = nullptr;
                    if (!entry.path.empty() && openFile(e, entry.path)) tab = e.activeTab();
                    if (!tab) tab = &e.openTab(std::make_unique<Tab>(newDocument()));
                    // The recovered text replaces what the file holds, as an unsaved change.
                    tab->replaceRange({0, tab->text().length()}, utf16FromUtf8(*text), Selection::caretAt(0));
                }
            }
            if (button == 0 || button == 1) remove();
            // What the user asked to open comes after the answer, whatever it is.
            if (then) then(e);
        }));
}

void registerFileCommands(Editor& editor) {
    editor.addCommand("save", [](Editor& e) {
        if (Tab* tab = e.activeTab()) saveThen(e, *tab, {});
    });
    editor.addCommand("save-as", [](Editor& e) {
        if (Tab* tab = e.activeTab()) askSaveAs(e, *tab, {});
    });
    editor.addCommand("open", [](Editor& e) {
        std::string folder = ".";
        if (Tab* tab = e.activeTab(); tab && !tab->path().empty()) folder = fs::path(tab->path()).parent_path().string();
        showFileList(e, folder);
    });
    editor.addCommand("new-file", [](Editor& e) {
        e.openTab(std::make_unique<Tab>(newDocument()));
    });
    editor.addCommand("close-tab", [](Editor& e) {
        if (Tab* tab = e.activeTab()) closeTabAsking(e, *tab, {});
    });
    editor.addCommand("quit", quitAsking);
}

}  // namespace vx::editor

#include "app/editor/quick_open_panel.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <mutex>

#include "app/editor/editor.hpp"
#include "app/editor/files.hpp"
#include "app/editor/list_panel.hpp"
#include "app/tui/width.hpp"
#include "platform/run_loop.hpp"
#include "projects/project.hpp"

namespace vx::editor {

// What the panel shows; searches hand their rows over on the main thread.
struct QuickOpenPanel::Results {
    std::vector<ActionPanelGenericItem> rows;
    uint64_t generation = 0;  // of the newest search started
    bool searching = false;
};

namespace {

// Collects one search's rows on the index's queue and hands them to the panel on the main thread,
// unless a newer search has started since.
class PanelDelegate final : public QuickOpenDelegate {
public:
    PanelDelegate(std::weak_ptr<QuickOpenPanel::Results> results, uint64_t generation)
        : m_results(std::move(results)), m_generation(generation) {}

    void anythread_insertItem(const ActionPanelGenericItem& item) override { m_rows.push_back(item); }
    void anythread_finishedPrimary() override {
        RunLoop::main().performBlock([results = m_results, generation = m_generation, rows = std::move(m_rows)]() mutable {
            auto shown = results.lock();
            if (!shown || shown->generation != generation) return;
            shown->rows = std::move(rows);
            shown->searching = false;
        });
        m_rows.clear();
    }
    void anythread_reload() override {}

private:
    std::weak_ptr<QuickOpenPanel::Results> m_results;
    uint64_t m_generation;
    std::vector<ActionPanelGenericItem> m_rows;
};

std::mutex projectMutex;
std::shared_ptr<VXProject> theCurrentProject;

bool isDirectory(const std::string& path) {
    struct stat info;
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

}  // namespace

QuickOpenPanel::QuickOpenPanel(std::string root, QuickOpenIndex& index)
    : m_root(std::move(root)), m_index(index), m_results(std::make_shared<Results>()) {}

void QuickOpenPanel::search() {
    m_selected = 0;
    m_top = 0;
    ++m_results->generation;
    // Letting the previous delegate go stops its search at the next path it looks at.
    m_delegate = std::make_shared<PanelDelegate>(m_results, m_results->generation);
    ActionPanelFileModule module(m_index);
    module.query = m_query;
    module.delegate = m_delegate;
    m_results->searching = module.startSearch();
    if (!m_results->searching) m_results->rows.clear();
}

bool QuickOpenPanel::handleKey(Editor& editor, const tui::KeyEvent& key) {
    const int count = static_cast<int>(m_results->rows.size());
    if (key.key == tui::Key::Escape) return false;
    if (key.key == tui::Key::Enter) {
        if (m_selected >= count) return true;
        const ActionPanelGenericItem chosen = m_results->rows[static_cast<size_t>(m_selected)];
        if (isDirectory(chosen.performPath)) {  // a folder in a listing: list it in turn
            m_query = chosen.displayPath + "/";
            search();
            return true;
        }
        openFile(editor, chosen.performPath);
        return false;
    }
    if (moveListSelection(m_selected, count, key)) return true;
    if (editListQuery(m_query, key)) search();
    return true;
}

bool QuickOpenPanel::handlePaste(Editor&, std::string_view text) {
    appendToListQuery(m_query, text);
    search();
    return true;
}

void QuickOpenPanel::draw(tui::Screen& screen, const EditorColors& colors, const Layout& layout) const {
    const std::string title = "Open quickly in " + m_root;
    std::vector<std::string> lines;
    for (const auto& row : m_results->rows) lines.push_back(row.name + "  " + row.displayPath);
    const ListPanelLook look{title + ": " + m_query, tui::stringWidth(title) + 4, 100,
                             m_query.empty()              ? "(type part of a file's path; end with / for a folder)"
                             : m_results->searching ? "(searching)"
                                                          : "(no matches)"};
    drawListPanel(screen, colors, layout, look, lines, m_selected, m_top);
}

std::shared_ptr<VXProject> openProjectForPath(const std::string& path) {
    auto project = VXProjectManager::sharedManager().getOrCreateProjectForURL(path);
    if (!project) return nullptr;
    std::lock_guard lock(projectMutex);
    if (theCurrentProject == project) return project;
    if (theCurrentProject) theCurrentProject->stopScanning();
    theCurrentProject = project;
    project->startScanning();
    return project;
}

std::shared_ptr<VXProject> currentProject() {
    std::lock_guard lock(projectMutex);
    return theCurrentProject;
}

void showQuickOpen(Editor& editor) {
    auto project = currentProject();
    Tab* tab = editor.activeTab();
    const std::string file = tab ? tab->path() : std::string();
    // The active file's project, unless the current project holds the file (or there is no file).
    if (!file.empty() && !(project && project->isParentOrEqualTo(file))) {
        project = openProjectForPath(file);
    } else if (!project) {
        char buffer[4096];
        project = openProjectForPath(::getcwd(buffer, sizeof buffer) ? buffer : "/");
    }
    if (!project) return;
    editor.showModal(std::make_unique<QuickOpenPanel>(project->directoryURL));
}

void registerQuickOpenCommands(Editor& editor) {
    editor.addCommand("quick-open", [](Editor& e) { showQuickOpen(e); });
}

}  // namespace vx::editor

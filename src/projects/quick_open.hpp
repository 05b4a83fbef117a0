// Quick open: a query such as "src/vie" is split into path components and matched right to left
// against the components of every indexed path; the survivors are scored (see
// quick_open_score.hpp), sorted and handed to the panel, at most about a hundred rows.
//
//     QuickOpenIndex& index = ActionPanelFileModule::sharedIndex();
//     index.rootChanged("/home/me/project");            // rebuilds both indexes in the background
//     ActionPanelFileModule module(index);
//     module.query = "src/vie";
//     module.delegate = panel;                            // a std::shared_ptr<QuickOpenDelegate>
//     module.startSearch();                               // rows arrive on the index's queue
//
// A search runs on its index's serial queue after any rebuild posted before it. A search whose
// delegate has gone away stops, so a panel drops a stale search by replacing its delegate.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "projects/path_index.hpp"

namespace vx {

// One row of the panel.
struct ActionPanelGenericItem {
    std::string name;         // the last path component
    std::string displayPath;  // the path relative to the root
    std::string performPath;  // root joined with the relative path
    std::string icon;
    double score = 0;
    bool ignored = false;
};

// Receives a search's rows; called on the index's queue, so an implementation passes them to its
// own thread.
class QuickOpenDelegate {
public:
    virtual ~QuickOpenDelegate() = default;
    virtual void anythread_insertItem(const ActionPanelGenericItem& item) = 0;
    virtual void anythread_finishedPrimary() = 0;
    virtual void anythread_reload() = 0;
};

// The user default that makes the walk leave out what version-control ignore files exclude.
inline constexpr const char* kVXQuickOpenHonorsIgnoreFiles = "VXQuickOpenHonorsIgnoreFiles";
// Its value in the standard user defaults (on when unset).
bool quickOpenHonorsIgnoreFiles();

// The two indexes of one project root: files and folders.
class QuickOpenIndex {
public:
    path_collection searchIndexFiles;
    path_collection searchIndexDirectories;

    std::string root() const;
    // Does nothing when the root is unchanged and `force` is false; otherwise keeps the new root
    // and rebuilds.
    void rootChanged(const std::string& newRoot, bool force = false);
    // Posts a rebuild of each index on its queue, from the root current when the rebuild runs.
    void buildIndex();
    // Waits until everything posted to both queues so far has run.
    void waitUntilIdle();

    // Whether rebuilds leave out ignored paths; read by each rebuild as it starts.
    void setHonorsIgnoreFiles(bool honors) { m_honorsIgnoreFiles = honors; }
    bool honorsIgnoreFiles() const { return m_honorsIgnoreFiles; }

private:
    mutable std::mutex m_mutex;
    std::string m_root;
    std::atomic<bool> m_honorsIgnoreFiles{true};
};

class ActionPanelFileModule {
public:
    // The index the editor uses: created on first use, never freed.
    static QuickOpenIndex& sharedIndex();

    explicit ActionPanelFileModule(QuickOpenIndex& index = sharedIndex()) : m_index(index) {}

    std::string query;
    std::weak_ptr<QuickOpenDelegate> delegate;

    // Starts the search of `query`. False when there is nothing to search ("/" alone); a query
    // ending in "/" loses it and searches the folders.
    bool startSearch();

private:
    QuickOpenIndex& m_index;
};

// Runs one query to its end and answers the delivered rows; for the command line, tests and
// benchmarks.
std::vector<ActionPanelGenericItem> quickOpenRows(QuickOpenIndex& index, const std::string& query);

// Orders names as the platform's file browser does: digits by value, case ignored.
bool localizedStandardLess(const std::string& a, const std::string& b);

}  // namespace vx

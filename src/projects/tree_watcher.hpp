// Watches a project folder and everything indexed below it (inotify), and calls back once the tree
// has been quiet for a moment after a file or folder was created, deleted, renamed or moved, so
// the quick-open indexes can be rebuilt without a restart. A burst of changes (a checkout, a
// build writing many files) gives one call, not one per file.
//
// Folders the quick-open filter leaves out (".git", "node_modules", "build", ...) are not watched:
// they change the most and would only cause rebuilds that find nothing new.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace vx {

class TreeWatcher {
public:
    using Callback = std::function<void()>;

    // Starts watching at once; the callback runs on the watcher's own thread. Nothing is watched
    // (and valid() is false) when inotify cannot be had.
    TreeWatcher(std::string root, Callback changed, std::chrono::milliseconds quietPeriod = std::chrono::milliseconds(200));
    ~TreeWatcher();
    TreeWatcher(const TreeWatcher&) = delete;
    TreeWatcher& operator=(const TreeWatcher&) = delete;

    bool valid() const;
    // How many folders are watched now (they are added as they appear).
    size_t watchedFolderCount() const;

    struct State;

private:
    std::shared_ptr<State> m_state;
};

}  // namespace vx

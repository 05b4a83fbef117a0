#include "projects/tree_watcher.hpp"

#include <dirent.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <atomic>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/unique_handle.hpp"
#include "projects/path_filter.hpp"
#include "projects/path_index.hpp"

namespace vx {

namespace {
constexpr uint32_t kEvents = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF;
}

struct TreeWatcher::State {
    std::string root;
    Callback changed;
    std::chrono::milliseconds quiet;
    UniqueFd inotify;
    UniqueFd stop;  // an eventfd that ends the thread
    mutable std::mutex mutex;
    std::map<int, std::string> folders;  // watch descriptor -> path relative to the root
    std::thread thread;

    // Watches a folder and the folders below it that the index would walk into.
    void watchTree(const std::string& relative) {
        const std::string absolute = relative.empty() ? root : root + "/" + relative;
        if (!relative.empty()) {
            std::vector<std::string_view> components;
            if (!pathIsGood(lowercasePath(relative), components)) return;
        }
        const int wd = ::inotify_add_watch(inotify.get(), absolute.c_str(), kEvents | IN_ONLYDIR | IN_DONT_FOLLOW);
        if (wd < 0) return;
        {
            std::lock_guard lock(mutex);
            folders[wd] = relative;
        }
        DIR* dir = ::opendir(absolute.c_str());
        if (!dir) return;
        std::vector<std::string> children;
        while (const dirent* entry = ::readdir(dir)) {
            const std::string_view name = entry->d_name;
            if (name == "." || name == ".." || entry->d_type != DT_DIR) continue;
            children.push_back(relative.empty() ? std::string(name) : relative + "/" + std::string(name));
        }
        ::closedir(dir);
        for (const auto& child : children) watchTree(child);
    }

    // Reads the events waiting; answers whether any of them changed the tree.
    bool drain() {
        alignas(inotify_event) char buffer[16384];
        bool changedTree = false;
        while (true) {
            const ssize_t length = ::read(inotify.get(), buffer, sizeof buffer);
            if (length <= 0) break;
            for (ssize_t at = 0; at < length;) {
                const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
                at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
                if (event->mask & IN_Q_OVERFLOW) {
                    changedTree = true;
                    continue;
                }
                std::string parent;
                {
                    std::lock_guard lock(mutex);
                    auto folder = folders.find(event->wd);
                    if (folder == folders.end()) continue;
                    parent = folder->second;
                    if (event->mask & IN_IGNORED) {
                        folders.erase(folder);
                        continue;
                    }
                }
                changedTree = true;
                if ((event->mask & (IN_CREATE | IN_MOVED_TO)) && (event->mask & IN_ISDIR) && event->len > 0)
                    watchTree(parent.empty() ? std::string(event->name) : parent + "/" + event->name);
            }
        }
        return changedTree;
    }

    void run() {
        pollfd fds[2] = {{inotify.get(), POLLIN, 0}, {stop.get(), POLLIN, 0}};
        bool pending = false;
        while (true) {
            // With a change pending, wait only as long as the tree must stay quiet.
            const int timeout = pending ? static_cast<int>(quiet.count()) : -1;
            const int ready = ::poll(fds, 2, timeout);
            if (ready < 0) continue;
            if (fds[1].revents) return;
            if (ready == 0) {
                pending = false;
                changed();
                continue;
            }
            if (fds[0].revents & POLLIN) pending = drain() || pending;
        }
    }
};

TreeWatcher::TreeWatcher(std::string root, Callback changed, std::chrono::milliseconds quietPeriod)
    : m_state(std::make_shared<State>()) {
    m_state->root = std::move(root);
    while (m_state->root.size() > 1 && m_state->root.back() == '/') m_state->root.pop_back();
    m_state->changed = std::move(changed);
    m_state->quiet = quietPeriod;
    m_state->inotify = UniqueFd(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    m_state->stop = UniqueFd(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!m_state->inotify || !m_state->stop) return;
    m_state->watchTree("");
    m_state->thread = std::thread([state = m_state.get()] { state->run(); });
}

TreeWatcher::~TreeWatcher() {
    if (!m_state->thread.joinable()) return;
    const uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(m_state->stop.get(), &one, sizeof one);
    m_state->thread.join();
}

bool TreeWatcher::valid() const { return m_state->thread.joinable(); }

size_t TreeWatcher::watchedFolderCount() const {
    std::lock_guard lock(m_state->mutex);
    return m_state->folders.size();
}

}  // namespace vx

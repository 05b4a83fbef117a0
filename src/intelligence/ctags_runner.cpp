#include "intelligence/ctags_runner.hpp"

#include <poll.h>
#include <stdlib.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdlib>
#include <algorithm>
#include <cctype>
#include <deque>
#include <fstream>
#include <mutex>
#include <simdjson.h>
#include <thread>

#include "platform/log.hpp"
#include "process/taskit.hpp"

namespace vx {
namespace {

// A file of paths, one a line, for ctags' -L; removed when it goes.
class ListFile {
public:
    explicit ListFile(const std::vector<std::string>& files) {
        std::string pattern = (std::getenv("TMPDIR") ? std::string(std::getenv("TMPDIR")) : std::string("/tmp")) +
                              "/vx-ctags-list-XXXXXX";
        UniqueFd fd(::mkstemp(pattern.data()));
        if (!fd) return;
        m_path = pattern;
        std::string text;
        for (const auto& file : files) {
            if (file.find('\n') != std::string::npos) continue;  // -L cannot carry such a name
            text += file;
            text += '\n';
        }
        for (size_t done = 0; done < text.size();) {
            const ssize_t n = ::write(fd.get(), text.data() + done, text.size() - done);
            if (n <= 0) break;
            done += static_cast<size_t>(n);
        }
    }
    ~ListFile() {
        if (!m_path.empty()) ::unlink(m_path.c_str());
    }
    ListFile(const ListFile&) = delete;
    ListFile& operator=(const ListFile&) = delete;
    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

// Files finished by the worker threads, waiting for the calling thread.
class FileQueue {
public:
    void push(CtagsFileTags file) {
        std::lock_guard lock(m_mutex);
        m_files.push_back(std::move(file));
        m_changed.notify_one();
    }
    void workerDone() {
        std::lock_guard lock(m_mutex);
        ++m_doneWorkers;
        m_changed.notify_one();
    }
    // Waits for the next file; nothing once every worker is done and the queue is empty.
    std::optional<CtagsFileTags> pop(unsigned workers) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return !m_files.empty() || m_doneWorkers == workers; });
        if (m_files.empty()) return std::nullopt;
        CtagsFileTags file = std::move(m_files.front());
        m_files.pop_front();
        return file;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<CtagsFileTags> m_files;
    unsigned m_doneWorkers = 0;
};

std::vector<std::string> ctagsArguments(const std::string& listPath, const CtagsRun& run) {
    // No option files of the user's: the index must not depend on ~/.ctags.d.
    // Prototypes are off by default in C and C++; a header's declarations are what go to
    // definition finds for functions defined elsewhere.
    std::vector<std::string> arguments = {"--options=NONE", "--output-format=json", "--sort=no", "--fields=+nlS",
                                          "--kinds-C=+p", "--kinds-C++=+p", "-f", "-", "-L", listPath};
    if (!run.forcedLanguage.empty()) arguments.insert(arguments.begin() + 1, "--language-force=" + run.forcedLanguage);
    return arguments;
}

// Runs one ctags process over a share of the files; parses its output as it arrives, handing on
// each file's tags when the next file begins (ctags reports a file's tags together).
bool runOne(const std::vector<std::string>& files, const CtagsRun& run, FileQueue& out) {
    ListFile list(files);
    if (list.path().empty()) return false;
    auto task = Taskit::task();
    task->setLaunchPath(VXCtagsExecutable());
    task->setArguments(ctagsArguments(list.path(), run));
    task->populateWithCurrentEnvironment();
    if (!task->launch()) return false;

    CtagsFileTags current;
    std::string pending;
    auto takeLines = [&](bool atEnd) {
        size_t start = 0;
        for (size_t newline; (newline = pending.find('\n', start)) != std::string::npos; start = newline + 1) {
            auto parsed = VXParseCtagsLine(std::string_view(pending).substr(start, newline - start));
            if (!parsed) continue;
            if (parsed->first != current.path) {
                if (!current.path.empty()) out.push(std::move(current));
                current = CtagsFileTags{std::move(parsed->first), {}};
            }
            current.tags.push_back(std::move(parsed->second));
        }
        pending.erase(0, start);
        if (atEnd && !current.path.empty()) out.push(std::move(current));
    };

    // Both streams are drained together so that neither pipe fills and stalls ctags.
    pollfd fds[2] = {{task->outPipe().readEnd.get(), POLLIN, 0}, {task->errPipe().readEnd.get(), POLLIN, 0}};
    char buffer[1 << 16];
    int open = 2;
    while (open > 0) {
        if (::poll(fds, 2, -1) < 0) {
            if (errno == EINTR) continue;
            break;
        }
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd < 0 || !(fds[i].revents & (POLLIN | POLLHUP | POLLERR))) continue;
            const ssize_t n = ::read(fds[i].fd, buffer, sizeof buffer);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) {
                fds[i].fd = -1;
                --open;
                continue;
            }
            if (i == 0) {
                pending.append(buffer, static_cast<size_t>(n));
                takeLines(false);
            }
        }
    }
    pending += '\n';
    takeLines(true);
    task->waitUntilExit();
    return task->terminationReason() == 1 && task->terminationStatus() == 0;
}

}  // namespace

std::optional<std::pair<std::string, CtagsTag>> VXParseCtagsLine(std::string_view line) {
    if (line.empty() || line.front() != '{') return std::nullopt;
    // ctags writes hundreds of thousands of these lines for a large tree; an on-demand parser
    // reads the few fields wanted without building a tree of the object. It may read a little
    // past the text, so the line is copied into a buffer with that much room.
    thread_local simdjson::ondemand::parser parser;
    thread_local std::string buffer;
    buffer.assign(line);
    buffer.reserve(line.size() + simdjson::SIMDJSON_PADDING);
    simdjson::ondemand::document document;
    simdjson::ondemand::object object;
    if (parser.iterate(buffer.data(), buffer.size(), buffer.capacity()).get(document) || document.get_object().get(object))
        return std::nullopt;

    CtagsTag tag;
    std::string path;
    bool isTag = false;
    for (auto field : object) {
        std::string_view key;
        simdjson::ondemand::value value;
        if (field.unescaped_key().get(key) || field.value().get(value)) return std::nullopt;
        if (key == "line") {
            int64_t number = 0;
            if (!value.get_int64().get(number)) tag.line = number;
            continue;
        }
        std::string_view text;
        if (value.get_string().get(text)) continue;  // a field of another type: not one read here
        if (key == "_type") isTag = text == "tag";
        else if (key == "name") tag.name = text;
        else if (key == "path") path = text;
        else if (key == "pattern") tag.pattern = text;
        else if (key == "language") tag.language = text;
        else if (key == "kind") tag.kind = text;
        else if (key == "scope") tag.scope = text;
        else if (key == "scopeKind") tag.scopeKind = text;
        else if (key == "signature") tag.signature = text;
    }
    if (!isTag || tag.name.empty() || path.empty()) return std::nullopt;
    return std::make_pair(std::move(path), std::move(tag));
}

std::string VXLineOfCtagsPattern(std::string_view pattern, bool* anchoredAtEnd) {
    if (anchoredAtEnd) *anchoredAtEnd = false;
    if (pattern.size() < 2 || pattern.front() != '/' || pattern.back() != '/') return {};
    std::string_view body = pattern.substr(1, pattern.size() - 2);
    if (!body.empty() && body.front() == '^') body.remove_prefix(1);
    if (!body.empty() && body.back() == '$' && (body.size() < 2 || body[body.size() - 2] != '\\')) {
        body.remove_suffix(1);
        if (anchoredAtEnd) *anchoredAtEnd = true;
    }
    // ctags escapes the pattern's delimiter and backslashes with a backslash.
    std::string line;
    line.reserve(body.size());
    for (size_t i = 0; i < body.size(); ++i) {
        if (body[i] == '\\' && i + 1 < body.size() && (body[i + 1] == '/' || body[i + 1] == '\\')) ++i;
        line += body[i];
    }
    return line;
}

std::string VXCtagsExecutable() {
    static const std::string found = [] {
        const char* variable = std::getenv("PATH");
        std::string path = variable ? variable : "/usr/local/bin:/usr/bin:/bin";
        for (size_t start = 0; start <= path.size();) {
            size_t end = path.find(':', start);
            if (end == std::string::npos) end = path.size();
            std::string candidate = path.substr(start, end - start) + "/ctags";
            if (end > start && ::access(candidate.c_str(), X_OK) == 0) return candidate;
            start = end + 1;
        }
        return std::string();
    }();
    return found;
}

std::string VXCtagsLanguageNamed(std::string_view name) {
    static const std::vector<std::string> languages = [] {
        std::vector<std::string> names;
        if (VXCtagsExecutable().empty()) return names;
        auto task = Taskit::task();
        task->setLaunchPath(VXCtagsExecutable());
        task->setArguments({"--options=NONE", "--list-languages"});
        if (!task->launch()) return names;
        std::string output;
        task->waitForOutputString(&output, nullptr);
        task->waitUntilExit();
        for (size_t start = 0; start < output.size();) {
            size_t end = output.find('\n', start);
            if (end == std::string::npos) end = output.size();
            std::string line = output.substr(start, end - start);
            if (auto space = line.find(' '); space != std::string::npos) line.erase(space);  // "Foo [disabled]"
            if (!line.empty()) names.push_back(line);
            start = end + 1;
        }
        return names;
    }();
    if (name.empty()) return {};
    for (const auto& language : languages)
        if (language.size() == name.size() &&
            std::equal(language.begin(), language.end(), name.begin(),
                       [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b)); }))
            return language;
    return {};
}

bool VXRunCtags(const std::vector<std::string>& files, const CtagsRun& run,
                const std::function<void(CtagsFileTags&&)>& onFile) {
    if (files.empty()) return true;
    if (VXCtagsExecutable().empty()) {
        VX_LOG_DEBUG("intelligence", "ctags is not installed");
        return false;
    }
    const unsigned jobs = std::max(1u, std::min<unsigned>(run.jobs, static_cast<unsigned>(files.size())));
    // Interleaved shares balance big and small files better than contiguous slices.
    std::vector<std::vector<std::string>> shares(jobs);
    for (size_t i = 0; i < files.size(); ++i) shares[i % jobs].push_back(files[i]);

    FileQueue queue;
    std::vector<char> succeeded(jobs, 0);
    std::vector<std::thread> workers;
    for (unsigned j = 0; j < jobs; ++j)
        workers.emplace_back([&, j] {
            succeeded[j] = runOne(shares[j], run, queue);
            queue.workerDone();
        });
    while (auto file = queue.pop(jobs)) onFile(std::move(*file));
    for (auto& worker : workers) worker.join();
    for (char ok : succeeded)
        if (!ok) return false;
    return true;
}

}  // namespace vx

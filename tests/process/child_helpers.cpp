#include "child_helpers.hpp"

#include <dirent.h>
#include <unistd.h>

#include <cctype>
#include <fstream>
#include <sstream>

namespace vx::test {
namespace {

// The fields after the command name of /proc/<pid>/stat: state, ppid, ...
bool readStat(const std::string& pid, char& state, pid_t& parent) {
    std::ifstream file("/proc/" + pid + "/stat");
    std::string line;
    if (!std::getline(file, line)) return false;
    const size_t close = line.rfind(')');
    if (close == std::string::npos) return false;
    std::istringstream rest(line.substr(close + 1));
    return bool(rest >> state >> parent);
}

}  // namespace

std::unique_ptr<Taskit> shellTask(const std::string& script) {
    auto task = Taskit::task();
    task->setLaunchPath("/bin/sh");
    task->arguments() = {"-c", script};
    return task;
}

char processState(pid_t pid) {
    char state = 0;
    pid_t parent = 0;
    return readStat(std::to_string(pid), state, parent) ? state : '\0';
}

std::string processName(pid_t pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/comm");
    std::string name;
    std::getline(file, name);
    return name;
}

std::string zombieChildren() {
    std::string zombies;
    DIR* proc = ::opendir("/proc");
    if (!proc) return "(no /proc)";
    while (const dirent* entry = ::readdir(proc)) {
        if (!std::isdigit(static_cast<unsigned char>(entry->d_name[0]))) continue;
        char state = 0;
        pid_t parent = 0;
        if (readStat(entry->d_name, state, parent) && parent == ::getpid() && state == 'Z')
            zombies += std::string(entry->d_name) + " ";
    }
    ::closedir(proc);
    return zombies;
}

}  // namespace vx::test

// vx quick-open ROOT QUERY... [--json] [--list files|dirs] [--no-ignore-files] [--timing]: builds the
// project's quick-open indexes and runs each query as the panel does, printing the delivered rows.
// --timing also writes how long the indexing and each search took to standard error (what
// bench/quick_open_peers.py reads).
// vx smart-sort QUERY NAME...: the names in the symbol lists' ranking order, with their scores.
#include <sys/stat.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "app/commands/command.hpp"
#include "projects/quick_open.hpp"
#include "projects/smart_sort.hpp"

namespace vx::cli {
namespace {

std::string scoreText(double score) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.6f", score);
    return buffer;
}

// Wall and CPU milliseconds (all threads) since construction.
struct Stopwatch {
    std::chrono::steady_clock::time_point wall = std::chrono::steady_clock::now();
    double cpu = cpuSeconds();
    static double cpuSeconds() {
        timespec now;
        ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
        return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
    }
    std::string report() const {
        char buffer[64];
        std::snprintf(buffer, sizeof buffer, "%.3f\t%.3f",
                      std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - wall).count(),
                      (cpuSeconds() - cpu) * 1e3);
        return buffer;
    }
};

// The process's peak resident size in KiB, as the kernel counts it (VmHWM).
std::string peakResidentKiB() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind("VmHWM:", 0) == 0) return std::to_string(std::strtoll(line.c_str() + 6, nullptr, 10));
    return "0";
}

std::string absoluteRoot(const std::string& root) {
    struct stat info;
    if (::stat(root.c_str(), &info) != 0 || !S_ISDIR(info.st_mode))
        throw CommandFailure(root + ": not a folder");
    std::string absolute = std::filesystem::absolute(root).lexically_normal().string();
    while (absolute.size() > 1 && absolute.back() == '/') absolute.pop_back();
    return absolute;
}

void registerQuickOpen(CLI::App& app) {
    static std::string root, list;
    static std::vector<std::string> queries;
    static bool json = false, noIgnoreFiles = false, timing = false;
    auto* command = app.add_subcommand("quick-open", "Find files of a project as the quick-open panel does");
    command->add_option("root", root, "The project folder")->required();
    command->add_option("queries", queries, "Queries; one ending in / searches the folders");
    command->add_flag("--json", json, "One JSON array of rows per query");
    command->add_option("--list", list, "Print the indexed paths of one index instead")->check(CLI::IsMember({"files", "dirs"}));
    command->add_flag("--no-ignore-files", noIgnoreFiles, "Index what .gitignore files exclude too");
    command->add_flag("--timing", timing, "Write the time of the indexing and of each search to standard error");
    command->callback([] {
        QuickOpenIndex index;
        index.setHonorsIgnoreFiles(!noIgnoreFiles && quickOpenHonorsIgnoreFiles());
        const Stopwatch indexing;
        index.rootChanged(absoluteRoot(root), true);
        index.waitUntilIdle();
        std::string times;
        if (timing)
            times += "index\t" + std::to_string(index.searchIndexFiles.items.size()) + "\t" +
                     std::to_string(index.searchIndexDirectories.items.size()) + "\t" + indexing.report() + "\n";
        std::string out;
        if (!list.empty()) {
            for (const auto& item : (list == "files" ? index.searchIndexFiles : index.searchIndexDirectories).items)
                out.append(item.path()).append("\n");
            writeOutput(out);
            if (timing) times += "memory\t" + peakResidentKiB() + "\n";
        std::fputs(times.c_str(), stderr);
            return;
        }
        for (const auto& query : queries) {
            const Stopwatch searching;
            const auto rows = quickOpenRows(index, query);
            if (timing) times += "search\t" + query + "\t" + searching.report() + "\n";
            if (json) {
                auto array = nlohmann::json::array();
                for (const auto& row : rows)
                    array.push_back({{"name", row.name},
                                     {"displayPath", row.displayPath},
                                     {"performPath", row.performPath},
                                     {"score", row.score}});
                out += array.dump() + "\n";
                continue;
            }
            out += "Q: " + query + "\n";
            for (const auto& row : rows) out += scoreText(row.score) + "\t" + row.displayPath + "\n";
        }
        writeOutput(out);
        if (timing) times += "memory\t" + peakResidentKiB() + "\n";
        std::fputs(times.c_str(), stderr);
    });
}

void registerSmartSort(CLI::App& app) {
    static std::string query;
    static std::vector<std::string> names;
    auto* command = app.add_subcommand("smart-sort", "Order names as the symbol lists do");
    command->add_option("query", query, "The text typed")->required();
    command->add_option("names", names, "The names to order");
    command->callback([] {
        std::vector<SmartSortEntry> entries;
        for (const auto& name : names) entries.push_back({name, std::nullopt});
        std::vector<double> scores;
        const auto order = smartSortOrder(query, entries, &scores);
        std::string out;
        for (size_t i : order) out += scoreText(scores[i]) + "\t" + names[i] + "\n";
        writeOutput(out);
    });
}

const CommandRegistration quickOpenRegistration("quick-open", registerQuickOpen);
const CommandRegistration smartSortRegistration("smart-sort", registerSmartSort);

}  // namespace
}  // namespace vx::cli

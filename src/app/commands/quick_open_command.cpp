// vx quick-open ROOT QUERY... [--json] [--list files|dirs] [--no-ignore-files]: builds the project's
// quick-open indexes and runs each query as the panel does, printing the delivered rows.
// vx smart-sort QUERY NAME...: the names in the symbol lists' ranking order, with their scores.
#include <sys/stat.h>

#include <cstdio>
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
    static bool json = false, noIgnoreFiles = false;
    auto* command = app.add_subcommand("quick-open", "Find files of a project as the quick-open panel does");
    command->add_option("root", root, "The project folder")->required();
    command->add_option("queries", queries, "Queries; one ending in / searches the folders");
    command->add_flag("--json", json, "One JSON array of rows per query");
    command->add_option("--list", list, "Print the indexed paths of one index instead")->check(CLI::IsMember({"files", "dirs"}));
    command->add_flag("--no-ignore-files", noIgnoreFiles, "Index what .gitignore files exclude too");
    command->callback([] {
        QuickOpenIndex index;
        index.setHonorsIgnoreFiles(!noIgnoreFiles && quickOpenHonorsIgnoreFiles());
        index.rootChanged(absoluteRoot(root), true);
        index.waitUntilIdle();
        std::string out;
        if (!list.empty()) {
            for (const auto& item : (list == "files" ? index.searchIndexFiles : index.searchIndexDirectories).items)
                out.append(item.path()).append("\n");
            writeOutput(out);
            return;
        }
        for (const auto& query : queries) {
            const auto rows = quickOpenRows(index, query);
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

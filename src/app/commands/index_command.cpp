// vx index ROOT [--db PATH]: indexes a project through the indexer process, exactly as the editor
// has it done, waits until the indexer says it is done, and prints what the index holds.
#include <sys/stat.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <nlohmann/json.hpp>

#include "app/commands/command.hpp"
#include "intelligence/ctags_runner.hpp"
#include "intelligence/index_paths.hpp"
#include "intelligence/indexing_controller.hpp"

namespace vx::cli {
namespace {

void registerIndex(CLI::App& app) {
    static std::string root, database;
    auto* index = app.add_subcommand("index", "Index a project's symbols into its symbol database (JSON summary)");
    index->add_option("ROOT", root, "The project folder")->required();
    index->add_option("--db", database, "The index file (default: the project's own place)");
    index->callback([] {
        struct stat info;
        if (::stat(root.c_str(), &info) != 0 || !S_ISDIR(info.st_mode)) throw CommandFailure(root + ": not a folder");
        if (VXCtagsExecutable().empty()) throw CommandFailure("ctags (universal-ctags) is not installed");
        const std::string path = database.empty() ? VXDefaultIndexPathForDirectory(root) : VXStandardizedPath(database);

        std::mutex mutex;
        std::condition_variable done;
        std::optional<VXBurrowerMessage> answer;
        // Observed before the project is opened, so that even a very quick answer is seen.
        auto observation = VXBurrowerProcess::shared().observeReplies([&](const VXBurrowerMessage& message) {
            if (message.value(burrower::kKind) != burrower::kProjectIndexed ||
                message.value(burrower::kProjectIndexDatabase) != path)
                return;
            std::lock_guard lock(mutex);
            answer = message;
            done.notify_all();
        });
        VXXIndexingController controller(root, path);
        {
            std::unique_lock lock(mutex);
            while (!done.wait_for(lock, std::chrono::milliseconds(200), [&] { return answer.has_value(); }))
                if (!VXBurrowerProcess::shared().isRunning())
                    throw CommandFailure("the indexer (" + VXBurrowerProcess::executablePath() + ") stopped before it was done");
        }
        if (answer->value("ok") != "1") throw CommandFailure("ctags failed while indexing " + root);
        nlohmann::ordered_json result;
        result["database"] = path;
        result["files"] = controller.database().fileCount();
        result["symbols"] = controller.database().symbolCount();
        controller.close();
        VXBurrowerProcess::shared().stop();
        writeOutput(result.dump() + "\n");
    });
}

const CommandRegistration registration("index", registerIndex);

}  // namespace
}  // namespace vx::cli

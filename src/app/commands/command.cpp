#include "app/commands/command.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <iterator>
#include <utility>
#include <vector>

#include "platform/file_cache.hpp"
#include "selectors/theme.hpp"

namespace vx::cli {
namespace {

std::vector<std::pair<const char*, RegisterFunction>>& registry() {
    static std::vector<std::pair<const char*, RegisterFunction>> commands;
    return commands;
}

}  // namespace

CommandRegistration::CommandRegistration(const char* name, RegisterFunction function) {
    registry().emplace_back(name, function);
}

void registerAllCommands(CLI::App& app) {
    for (auto& [name, function] : registry()) function(app);
}

std::string readInputFile(const std::string& path) {
    if (path == "-") {
        std::string text((std::istreambuf_iterator<char>(std::cin)), std::istreambuf_iterator<char>());
        if (std::cin.bad()) throw CommandFailure("cannot read standard input");
        return text;
    }
    errno = 0;
    auto text = readWholeFile(path);
    if (!text) {
        const char* reason = errno ? std::strerror(errno) : "not a readable file";
        throw CommandFailure(path + ": " + reason);
    }
    return std::move(*text);
}

void writeOutput(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

std::shared_ptr<VXTheme> loadThemeOrFail(const std::string& nameOrPath) {
    auto theme = loadTheme(nameOrPath);
    if (!theme) throw CommandFailure("unknown theme: " + nameOrPath);
    const bool coloured = std::any_of(theme->zonesArray.begin(), theme->zonesArray.end(), [&](const auto& zone) {
        const VXAttrDict look = theme->attributesForZone(zone);
        return look.foreground.alpha > 0 || look.background.alpha > 0;
    });
    if (!coloured) throw CommandFailure(nameOrPath + ": not a theme (no colours could be read from it)");
    return theme;
}

}  // namespace vx::cli

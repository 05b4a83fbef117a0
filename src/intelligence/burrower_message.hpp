// The messages between the editor and its indexer process: a broadcast named "VXBurrower" whose
// object names the editor ("burrower-<pid>") and whose user info says what to do. On the wire each
// is one JSON object on one line:
//
//   {"name":"VXBurrower","object":"burrower-4242","userInfo":{"kind":"VXBurrowerProjectOpen",
//    "project_identifier":"app.vxindex","project_directory":"/src/app",
//    "project_index_database":"/home/u/.local/share/Vellumex/ProjectIndexes/app.vxindex"}}
//
// The indexer answers on the same connection with messages named "VXBurrowerReply" (kinds
// "VXBurrowerProjectIndexed" and "VXBurrowerFileIndexed"), so that the editor can refresh what it
// shows and `vx index` knows when it is done.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace vx {

namespace burrower {
inline constexpr const char* kName = "VXBurrower";
inline constexpr const char* kReplyName = "VXBurrowerReply";

inline constexpr const char* kProjectOpen = "VXBurrowerProjectOpen";
inline constexpr const char* kProjectResume = "VXBurrowerProjectResume";
inline constexpr const char* kProjectSuspend = "VXBurrowerProjectSuspend";
inline constexpr const char* kProjectClose = "VXBurrowerProjectClose";
inline constexpr const char* kFileIndex = "VXBurrowerFileIndex";
inline constexpr const char* kProjectIndexed = "VXBurrowerProjectIndexed";
inline constexpr const char* kFileIndexed = "VXBurrowerFileIndexed";

inline constexpr const char* kKind = "kind";
inline constexpr const char* kProjectIdentifier = "project_identifier";
inline constexpr const char* kProjectDirectory = "project_directory";
inline constexpr const char* kProjectIndexDatabase = "project_index_database";
inline constexpr const char* kPath = "path";
inline constexpr const char* kContents = "contents";
inline constexpr const char* kLanguage = "language";
// Only in replies.
inline constexpr const char* kFiles = "files";
inline constexpr const char* kSymbols = "symbols";
}  // namespace burrower

struct VXBurrowerMessage {
    std::string name = burrower::kName;
    std::string object;
    std::map<std::string, std::string> userInfo;

    std::string value(const std::string& key) const {
        auto it = userInfo.find(key);
        return it == userInfo.end() ? std::string() : it->second;
    }
    bool has(const std::string& key) const { return userInfo.count(key) != 0; }
};

// "burrower-<pid>": the object string of an editor process's messages.
std::string VXBurrowerObjectForProcess(long pid);

// One line of JSON, newline included.
std::string VXEncodeBurrowerMessage(const VXBurrowerMessage& message);
// Nothing for a line that is not such an object (values that are not strings are dropped).
std::optional<VXBurrowerMessage> VXDecodeBurrowerMessage(std::string_view line);

}  // namespace vx

// VXLibraryDBManager: the library databases of this user, by library name ("c++/11",
// "java/jdk/7"). A library's file lives in "library-databases" of the user data folder as
// "v2-<name with / as ->.db"; when it is missing it can be fetched from the library-data server
// (the user default "VXLibraryDataServer"; no downloads when it is unset) at
//
//   <server>/gathering/databases/v2/<name with - doubled and / as ->.db
//
// Downloads run on a background thread, at most one per name; a failed one is forgotten so that
// the next request tries again. `vx library build` makes the files locally instead.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "intelligence/library_database.hpp"

namespace vx {

class VXLibraryDBManager {
public:
    static constexpr long version = 2;  // the format version in file names and URLs

    static VXLibraryDBManager& sharedManager();
    VXLibraryDBManager() = default;
    // Waits for downloads under way.
    ~VXLibraryDBManager();
    VXLibraryDBManager(const VXLibraryDBManager&) = delete;
    VXLibraryDBManager& operator=(const VXLibraryDBManager&) = delete;

    // The open database of a library; when its file is missing, nothing, after starting its
    // download when asked to.
    std::shared_ptr<VXXLibraryDatabase> libraryForName(const std::string& name, bool shouldDownload);
    // "v2-c++-11.db" for "c++/11".
    static std::string diskifyLibraryName(const std::string& name);
    // <user data>/library-databases/<diskified name>; the folder is created on demand.
    static std::string localPathForLibrary(const std::string& name);
    // The server's base URL from the user defaults, without a trailing "/"; "" when unset.
    static std::string downloadURL();
    // The file's address on the server; "" when there is no server.
    static std::string urlForLibrary(const std::string& name);
    // Starts fetching the library's file unless a download of it is under way; false when there
    // is no server to ask.
    bool downloadDB(const std::string& name);

    // Whether a download of the name is under way.
    bool isDownloading(const std::string& name);
    // Waits until every download started so far has ended (for tools and tests).
    void waitForDownloads();

private:
    void finishDownload(const std::string& name, bool succeeded);

    std::mutex m_mutex;
    std::map<std::string, std::shared_ptr<VXXLibraryDatabase>> m_libraries;
    std::set<std::string> m_downloads;
    std::vector<std::thread> m_threads;
};

// Fetches a URL into a file through libcurl: written beside `path` and renamed into place only
// when the whole body arrived with a success status. False (and nothing left behind) otherwise.
bool VXDownloadFile(const std::string& url, const std::string& path);

}  // namespace vx

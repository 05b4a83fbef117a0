#include "intelligence/library_manager.hpp"

#include <curl/curl.h>
#include <fcntl.h>
#include <unistd.h>

#include <filesystem>

#include "platform/log.hpp"
#include "platform/paths.hpp"
#include "platform/unique_handle.hpp"
#include "platform/user_defaults.hpp"

namespace vx {
namespace {

constexpr const char* kServerDefaultsKey = "VXLibraryDataServer";

void cleanupCurl(CURL* handle) { curl_easy_cleanup(handle); }
using UniqueCurl = UniqueHandle<CURL*, cleanupCurl>;

size_t writeToDescriptor(char* data, size_t size, size_t count, void* target) {
    const int fd = *static_cast<int*>(target);
    size_t done = 0;
    const size_t total = size * count;
    while (done < total) {
        const ssize_t n = ::write(fd, data + done, total - done);
        if (n <= 0) return done;  // anything short of the whole makes libcurl fail the transfer
        done += static_cast<size_t>(n);
    }
    return total;
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) text.replace(at, from.size(), to);
    return text;
}

}  // namespace

bool VXDownloadFile(const std::string& url, const std::string& path) {
    static const bool initialized = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    if (!initialized) return false;
    const std::string partial = path + ".download-" + std::to_string(::getpid());
    UniqueFd fd(::open(partial.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    if (!fd) return false;
    UniqueCurl curl(curl_easy_init());
    if (!curl) return false;
    int descriptor = fd.get();
    curl_easy_setopt(curl.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, writeToDescriptor);
    curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &descriptor);
    curl_easy_setopt(curl.get(), CURLOPT_FAILONERROR, 1L);  // an error page is not a database
    curl_easy_setopt(curl.get(), CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);     // safe on a background thread
    curl_easy_setopt(curl.get(), CURLOPT_CONNECTTIMEOUT, 20L);
    // A transfer that stalls (under 100 bytes a second for a minute) is given up.
    curl_easy_setopt(curl.get(), CURLOPT_LOW_SPEED_LIMIT, 100L);
    curl_easy_setopt(curl.get(), CURLOPT_LOW_SPEED_TIME, 60L);
    const CURLcode code = curl_easy_perform(curl.get());
    fd.reset();
    std::error_code error;
    if (code != CURLE_OK) {
        VX_LOG_DEBUG("intelligence", "download of %s failed: %s", url.c_str(), curl_easy_strerror(code));
        std::filesystem::remove(partial, error);
        return false;
    }
    std::filesystem::rename(partial, path, error);
    if (error) {
        std::filesystem::remove(partial, error);
        return false;
    }
    return true;
}

VXLibraryDBManager& VXLibraryDBManager::sharedManager() {
    static VXLibraryDBManager manager;
    return manager;
}

VXLibraryDBManager::~VXLibraryDBManager() { waitForDownloads(); }

std::string VXLibraryDBManager::diskifyLibraryName(const std::string& name) {
    return "v" + std::to_string(version) + "-" + replaced(name, "/", "-") + ".db";
}

std::string VXLibraryDBManager::localPathForLibrary(const std::string& name) {
    const std::string folder = userDataDirectory() + "/library-databases";
    makeDirectories(folder);
    return folder + "/" + diskifyLibraryName(name);
}

std::string VXLibraryDBManager::downloadURL() {
    std::string server = UserDefaults::standardUserDefaults().stringForKey(kServerDefaultsKey);
    while (!server.empty() && server.back() == '/') server.pop_back();
    return server;
}

std::string VXLibraryDBManager::urlForLibrary(const std::string& name) {
    const std::string server = downloadURL();
    if (server.empty()) return {};
    return server + "/gathering/databases/v" + std::to_string(version) + "/" + replaced(replaced(name, "-", "--"), "/", "-") + ".db";
}

std::shared_ptr<VXXLibraryDatabase> VXLibraryDBManager::libraryForName(const std::string& name, bool shouldDownload) {
    {
        std::lock_guard lock(m_mutex);
        if (auto it = m_libraries.find(name); it != m_libraries.end()) return it->second;
    }
    const std::string path = localPathForLibrary(name);
    std::error_code error;
    if (std::filesystem::is_regular_file(path, error)) {
        auto library = std::make_shared<VXXLibraryDatabase>(path);
        std::lock_guard lock(m_mutex);
        return m_libraries.try_emplace(name, std::move(library)).first->second;
    }
    if (shouldDownload) downloadDB(name);
    return nullptr;
}

bool VXLibraryDBManager::downloadDB(const std::string& name) {
    const std::string url = urlForLibrary(name);
    if (url.empty()) return false;
    const std::string path = localPathForLibrary(name);
    std::lock_guard lock(m_mutex);
    if (!m_downloads.insert(name).second) return true;  // already under way
    m_threads.emplace_back([this, name, url, path] { finishDownload(name, VXDownloadFile(url, path)); });
    return true;
}

void VXLibraryDBManager::finishDownload(const std::string& name, bool succeeded) {
    std::lock_guard lock(m_mutex);
    m_downloads.erase(name);  // a failed download is forgotten, so the next request tries again
    if (!succeeded) return;
    if (auto it = m_libraries.find(name); it != m_libraries.end()) it->second->reopenOnNext();
}

bool VXLibraryDBManager::isDownloading(const std::string& name) {
    std::lock_guard lock(m_mutex);
    return m_downloads.count(name) != 0;
}

void VXLibraryDBManager::waitForDownloads() {
    std::vector<std::thread> threads;
    {
        std::lock_guard lock(m_mutex);
        threads.swap(m_threads);
    }
    for (auto& thread : threads) thread.join();
}

}  // namespace vx

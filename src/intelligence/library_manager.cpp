#include "intelligence/library_manager.hpp"

#include <curl/curl.h>
#include <dlfcn.h>
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

// libcurl is opened when the first download starts rather than linked: it brings twenty
// libraries with it (TLS, SSH, LDAP, ...), and loading them at every start of the editor tripled
// the start-up time of `vx` for a feature most runs never use.
class Curl {
public:
    static const Curl* get() {
        static const Curl* loaded = [] {
            static Curl curl;
            return curl.load() ? &curl : nullptr;
        }();
        return loaded;
    }

    decltype(&curl_easy_init) easyInit = nullptr;
    decltype(&curl_easy_setopt) easySetopt = nullptr;
    decltype(&curl_easy_perform) easyPerform = nullptr;
    decltype(&curl_easy_cleanup) easyCleanup = nullptr;
    decltype(&curl_easy_strerror) easyStrerror = nullptr;

private:
    bool load() {
        // Kept open for the life of the process, as a linked library would be.
        void* library = ::dlopen("libcurl.so.4", RTLD_NOW | RTLD_LOCAL);
        if (!library) {
            VX_LOG_DEBUG("intelligence", "downloads are unavailable: %s", ::dlerror());
            return false;
        }
        auto globalInit = symbol<decltype(&curl_global_init)>(library, "curl_global_init");
        easyInit = symbol<decltype(easyInit)>(library, "curl_easy_init");
        easySetopt = symbol<decltype(easySetopt)>(library, "curl_easy_setopt");
        easyPerform = symbol<decltype(easyPerform)>(library, "curl_easy_perform");
        easyCleanup = symbol<decltype(easyCleanup)>(library, "curl_easy_cleanup");
        easyStrerror = symbol<decltype(easyStrerror)>(library, "curl_easy_strerror");
        return globalInit && easyInit && easySetopt && easyPerform && easyCleanup && easyStrerror &&
               globalInit(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    }
    template <typename Function>
    static Function symbol(void* library, const char* name) {
        return reinterpret_cast<Function>(::dlsym(library, name));
    }
};

void cleanupCurl(CURL* handle) { Curl::get()->easyCleanup(handle); }
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
    const Curl* library = Curl::get();
    if (!library) return false;
    const std::string partial = path + ".download-" + std::to_string(::getpid());
    UniqueFd fd(::open(partial.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    if (!fd) return false;
    UniqueCurl curl(library->easyInit());
    if (!curl) return false;
    int descriptor = fd.get();
    library->easySetopt(curl.get(), CURLOPT_URL, url.c_str());
    library->easySetopt(curl.get(), CURLOPT_WRITEFUNCTION, writeToDescriptor);
    library->easySetopt(curl.get(), CURLOPT_WRITEDATA, &descriptor);
    library->easySetopt(curl.get(), CURLOPT_FAILONERROR, 1L);  // an error page is not a database
    library->easySetopt(curl.get(), CURLOPT_FOLLOWLOCATION, 1L);
    library->easySetopt(curl.get(), CURLOPT_NOSIGNAL, 1L);     // safe on a background thread
    library->easySetopt(curl.get(), CURLOPT_CONNECTTIMEOUT, 20L);
    // A transfer that stalls (under 100 bytes a second for a minute) is given up.
    library->easySetopt(curl.get(), CURLOPT_LOW_SPEED_LIMIT, 100L);
    library->easySetopt(curl.get(), CURLOPT_LOW_SPEED_TIME, 60L);
    const CURLcode code = library->easyPerform(curl.get());
    fd.reset();
    std::error_code error;
    if (code != CURLE_OK) {
        VX_LOG_DEBUG("intelligence", "download of %s failed: %s", url.c_str(), library->easyStrerror(code));
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

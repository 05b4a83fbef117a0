#include "projects/project.hpp"

#include <chrono>
#include <filesystem>

#include "platform/log.hpp"
#include "platform/paths.hpp"
#include "platform/property_list.hpp"
#include "projects/project_database.hpp"
#include "projects/project_root.hpp"
#include "projects/quick_open.hpp"
#include "projects/tree_watcher.hpp"

namespace vx {
namespace {

double secondsNow() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

// Whether `inner` is `outer` or lies below it (both standardized).
bool isWithin(const std::string& inner, const std::string& outer) {
    if (inner.size() < outer.size() || inner.compare(0, outer.size(), outer) != 0) return false;
    return inner.size() == outer.size() || outer == "/" || inner[outer.size()] == '/';
}

}  // namespace

// --- VXProject -------------------------------------------------------------------------------

std::shared_ptr<VXProject> VXProject::initWithDictionary(const std::map<std::string, std::string>& dictionary,
                                                         VXProjectManager* manager) {
    const auto path = dictionary.find("path");
    if (path == dictionary.end() || path->second.empty()) return nullptr;
    auto project = std::make_shared<VXProject>();
    project->m_manager = manager;
    project->directoryURL = VXProjectStandardizedPath(path->second);
    const auto indexName = dictionary.find("indexName");
    project->indexName = indexName != dictionary.end() && !indexName->second.empty()
                             ? indexName->second
                             : VXProjectIndexNameForDirectory(project->directoryURL);
    const auto scanDirs = dictionary.find("scanDirs");
    project->shouldScanDirectories = scanDirs == dictionary.end() || scanDirs->second != "0";
    return project;
}

std::map<std::string, std::string> VXProject::generateDictionary() const {
    return {{"path", directoryURL}, {"indexName", indexName}, {"scanDirs", shouldScanDirectories ? "1" : "0"}};
}

bool VXProject::isPathEqual(const std::string& path) const { return VXProjectStandardizedPath(path) == directoryURL; }

bool VXProject::isParentOrEqualTo(const std::string& path) const {
    return isWithin(VXProjectStandardizedPath(path), directoryURL);
}

bool VXProject::isParentOrChildOrEqualTo(const std::string& path) const {
    const std::string standardized = VXProjectStandardizedPath(path);
    return isWithin(standardized, directoryURL) || isWithin(directoryURL, standardized);
}

void VXProject::startScanning(QuickOpenIndex& index) {
    isActive = true;
    if (!shouldScanDirectories) return;
    m_scanningIndex = &index;
    index.rootChanged(directoryURL);
    m_watcher = std::make_shared<TreeWatcher>(directoryURL, [&index, root = directoryURL] {
        if (index.root() == root) index.rootChanged(root, true);
    });
}

void VXProject::startScanning() {
    QuickOpenIndex& index = ActionPanelFileModule::sharedIndex();
    index.setHonorsIgnoreFiles(quickOpenHonorsIgnoreFiles());
    startScanning(index);
}

void VXProject::stopScanning() {
    isActive = false;
    m_watcher.reset();
    if (m_scanningIndex && m_scanningIndex->root() == directoryURL) m_scanningIndex->rootChanged("");
    m_scanningIndex = nullptr;
}

void VXProject::documentDidOpenInProject(const std::string& path) {
    activeFilePaths.insert(VXProjectStandardizedPath(path));
    lastDocumentOpenedDate = secondsNow();
}

void VXProject::documentDidCloseInProject(const std::string& path) {
    activeFilePaths.erase(VXProjectStandardizedPath(path));
    lastDocumentClosedDate = secondsNow();
}

bool VXProject::saveToDisk() {
    if (!m_manager || directoryURL.empty()) return false;
    bool saved = true;
    const auto dictionary = generateDictionary();
    m_manager->database().transaction([&](SqliteConnection& db) {
        for (const auto& [key, value] : dictionary)
            if (key != "path") saved = VXXProjectDatabase::setValue(db, value, key, directoryURL) && saved;
    });
    return saved;
}

std::vector<std::string> VXProject::allApplicableIndexDatabases() const {
    if (!m_manager || indexName.empty()) return {};
    return {m_manager->projectIndexesAppSupportURL() + "/" + indexName + ".vxindex"};
}

// --- VXProjectManager ------------------------------------------------------------------------

VXProjectManager& VXProjectManager::sharedManager() {
    static VXProjectManager* shared = [] {
        auto* manager = new VXProjectManager(VXXProjectDatabase::sharedDatabase(), userDataDirectory());
        manager->loadProjects();
        return manager;
    }();
    return *shared;
}

VXProjectManager::VXProjectManager(VXXProjectDatabase& database, std::string appSupportFolder)
    : m_database(database), m_appSupport(std::move(appSupportFolder)) {}

std::string VXProjectManager::projectsAppSupportURL() const {
    const std::string folder = m_appSupport + "/Projects";
    makeDirectories(folder);
    return folder;
}

std::string VXProjectManager::projectIndexesAppSupportURL() const {
    const std::string folder = m_appSupport + "/ProjectIndexes";
    makeDirectories(folder);
    return folder;
}

void VXProjectManager::loadProjects() {
    namespace fs = std::filesystem;
    std::error_code error;
    const std::string folder = projectsAppSupportURL();
    std::vector<fs::path> older;
    for (const auto& entry : fs::directory_iterator(folder, error))
        if (entry.is_regular_file(error) && entry.path().extension() == ".plist") older.push_back(entry.path());
    if (!older.empty()) {
        VXGoodLog("Upgrading projects");
        for (const auto& file : older) {
            const auto list = readPropertyListFile(file.string());
            const PropertyValue* directory = list ? list->find("directoryURL") : nullptr;
            if (!directory || !directory->string()) continue;
            std::map<std::string, std::string> dictionary{{"path", *directory->string()}};
            if (const PropertyValue* name = list->find("indexName"); name && name->string())
                dictionary["indexName"] = *name->string();
            if (const PropertyValue* scan = list->find("shouldScanDirectories"); scan && scan->boolValue())
                dictionary["scanDirs"] = *scan->boolValue() ? "1" : "0";
            if (auto project = VXProject::initWithDictionary(dictionary, this)) {
                std::lock_guard lock(m_mutex);
                if (std::none_of(m_projects.begin(), m_projects.end(),
                                 [&](const auto& known) { return known->directoryURL == project->directoryURL; }))
                    m_projects.push_back(project);
            }
        }
        upgradeProjectsToDB();
        const fs::path oldFolder = fs::path(folder) / "old";
        fs::create_directories(oldFolder, error);
        for (const auto& file : older) {
            const fs::path destination = oldFolder / file.filename();
            VXGoodLog("Moving %s -> %s", file.c_str(), destination.c_str());
            fs::rename(file, destination, error);
        }
    }
    VXGoodLog("Loading project DB");
    loadProjectDB();
}

void VXProjectManager::loadProjectDB() {
    std::vector<std::shared_ptr<VXProject>> loaded;
    m_database.transaction([&](SqliteConnection& db) {
        for (const auto& dictionary : VXXProjectDatabase::allProjects(db))
            if (auto project = VXProject::initWithDictionary(dictionary, this)) loaded.push_back(std::move(project));
    });
    std::lock_guard lock(m_mutex);
    for (auto& project : loaded)
        if (std::none_of(m_projects.begin(), m_projects.end(),
                         [&](const auto& known) { return known->directoryURL == project->directoryURL; }))
            m_projects.push_back(std::move(project));
}

void VXProjectManager::upgradeProjectsToDB() {
    const auto all = projects();
    m_database.transaction([&](SqliteConnection& db) {
        for (const auto& project : all) {
            if (project->directoryURL.empty()) continue;
            VXXProjectDatabase::setValue(db, project->indexName, "indexName", project->directoryURL);
            VXXProjectDatabase::setValue(db, project->shouldScanDirectories ? "1" : "0", "scanDirs", project->directoryURL);
        }
    });
}

std::vector<std::shared_ptr<VXProject>> VXProjectManager::projects() const {
    std::lock_guard lock(m_mutex);
    return m_projects;
}

std::vector<std::shared_ptr<VXProject>> VXProjectManager::activeProjects() const {
    std::vector<std::shared_ptr<VXProject>> active;
    for (auto& project : projects())
        if (project->isActive) active.push_back(project);
    return active;
}

std::shared_ptr<VXProject> VXProjectManager::projectAtURL(const std::string& path) const {
    const std::string standardized = VXProjectStandardizedPath(path);
    std::lock_guard lock(m_mutex);
    for (const auto& project : m_projects)
        if (project->directoryURL == standardized) return project;
    return nullptr;
}

std::shared_ptr<VXProject> VXProjectManager::projectForURL(const std::string& path, std::string* projectURL) const {
    const std::string standardized = VXProjectStandardizedPath(path);
    std::shared_ptr<VXProject> deepest;
    std::lock_guard lock(m_mutex);
    for (const auto& project : m_projects)
        if (isWithin(standardized, project->directoryURL) &&
            (!deepest || project->directoryURL.size() > deepest->directoryURL.size()))
            deepest = project;
    if (deepest && projectURL) *projectURL = deepest->directoryURL;
    return deepest;
}

std::shared_ptr<VXProject> VXProjectManager::createProjectAtURL(const std::string& path) {
    auto project = VXProject::initWithDictionary({{"path", path}}, this);
    if (!project) return nullptr;
    {
        std::lock_guard lock(m_mutex);
        for (const auto& known : m_projects)
            if (known->directoryURL == project->directoryURL) return known;
        m_projects.push_back(project);
    }
    project->saveToDisk();
    return project;
}

std::shared_ptr<VXProject> VXProjectManager::getOrCreateProjectAtExactURL(const std::string& path) {
    if (auto known = projectAtURL(path)) return known;
    return createProjectAtURL(path);
}

std::shared_ptr<VXProject> VXProjectManager::getOrCreateProjectForURL(const std::string& path) {
    bool strong = false;
    const std::string root = detectProjectURLForURL(path, strong);
    // A project the user already has between the path and its detected root keeps its files; so
    // does any project holding the path when no marker settled the root.
    if (auto known = projectForURL(path); known && (!strong || isWithin(known->directoryURL, root))) return known;
    auto project = getOrCreateProjectAtExactURL(root);
    if (project) project->wasStrong = project->wasStrong || strong;
    return project;
}

}  // namespace vx

// VXProject: one project, a folder the user works in, and VXProjectManager, the shared owner of
// all projects, which remembers them in the project store (projects.db).
//
//     auto project = VXProjectManager::sharedManager().getOrCreateProjectForURL("/src/app/lib/x.c");
//     project->directoryURL;    // "/src/app" (the repository's root: see project_root.hpp)
//     project->startScanning(); // quick open now searches /src/app
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace vx {

class QuickOpenIndex;
class TreeWatcher;
class VXXProjectDatabase;
class VXProjectManager;

class VXProject {
public:
    std::string directoryURL;        // the project folder, absolute and standardized
    std::string directoryBookmark;   // kept as stored; a terminal editor has no use for it
    std::string projectFileURL;
    std::string indexName;           // the name of its symbol index ("<folder>-<hash>")
    bool isAppSupport = false;
    bool isActive = false;
    bool wasStrong = false;          // found by a marker rather than inferred
    bool shouldScanDirectories = true;
    std::map<std::string, std::string> variables;
    std::vector<std::string> hiddenRelativeURLs;
    std::vector<std::string> unhiddenRelativeURLs;
    std::set<std::string> activeFilePaths;
    double lastDocumentOpenedDate = 0;    // seconds since 1970
    double lastDocumentModifiedDate = 0;
    double lastDocumentClosedDate = 0;

    // A project from a stored dictionary ("path", "indexName", "scanDirs"); nothing when it has
    // no path.
    static std::shared_ptr<VXProject> initWithDictionary(const std::map<std::string, std::string>& dictionary,
                                                         VXProjectManager* manager);
    // The keys the store keeps for the project, "path" included.
    std::map<std::string, std::string> generateDictionary() const;

    bool isPathEqual(const std::string& path) const;
    bool isParentOrEqualTo(const std::string& path) const;
    bool isParentOrChildOrEqualTo(const std::string& path) const;

    // Points quick open at this project (when it scans its folders) and keeps the indexes following
    // the tree: files and folders created, deleted or renamed show up after a short quiet period.
    // stopScanning lets it go.
    void startScanning(QuickOpenIndex& index);
    // The same on the editor's shared index, with the user's choice about ignore files.
    void startScanning();
    void stopScanning();

    void documentDidOpenInProject(const std::string& path);
    void documentDidCloseInProject(const std::string& path);

    // Writes the project's pairs to the store; false when the store refused.
    bool saveToDisk();
    // The symbol index files that serve this project.
    std::vector<std::string> allApplicableIndexDatabases() const;

private:
    VXProjectManager* m_manager = nullptr;
    QuickOpenIndex* m_scanningIndex = nullptr;
    std::shared_ptr<TreeWatcher> m_watcher;
    friend class VXProjectManager;
};

class VXProjectManager {
public:
    // The manager of the user's projects, on the store in the user data folder.
    static VXProjectManager& sharedManager();
    // A manager on a store and an application-support folder of its own.
    VXProjectManager(VXXProjectDatabase& database, std::string appSupportFolder);

    VXXProjectDatabase& database() { return m_database; }
    // "Projects" and "ProjectIndexes" in the application-support folder, created on demand.
    std::string projectsAppSupportURL() const;
    std::string projectIndexesAppSupportURL() const;

    // Migrates project files of the older layout (property lists "Projects/*.plist" holding
    // "directoryURL", "indexName" and "shouldScanDirectories"), moving each to "Projects/old", then
    // loads the store.
    void loadProjects();
    void loadProjectDB();
    void upgradeProjectsToDB();

    std::vector<std::shared_ptr<VXProject>> projects() const;
    std::vector<std::shared_ptr<VXProject>> activeProjects() const;

    // The project a file or folder belongs to: the deepest known project between it and its
    // detected root (or holding it at all, when no marker found the root), else the project at the
    // detected root, created and stored when new.
    std::shared_ptr<VXProject> getOrCreateProjectForURL(const std::string& path);
    std::shared_ptr<VXProject> getOrCreateProjectAtExactURL(const std::string& path);
    std::shared_ptr<VXProject> projectAtURL(const std::string& path) const;
    // The deepest known project holding `path`; `projectURL` receives its folder.
    std::shared_ptr<VXProject> projectForURL(const std::string& path, std::string* projectURL = nullptr) const;
    std::shared_ptr<VXProject> createProjectAtURL(const std::string& path);

private:
    VXXProjectDatabase& m_database;
    std::string m_appSupport;
    mutable std::mutex m_mutex;
    std::vector<std::shared_ptr<VXProject>> m_projects;
};

}  // namespace vx

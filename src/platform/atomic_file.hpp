// Replacing a file's contents so that a crash at any moment leaves either the old file or the new
// one, whole: the bytes go to a temporary file in the same folder, are flushed to the disk, and the
// temporary file is renamed over the target (rename is atomic within one file system).
//
// The system calls that can fail between the old file and the new one go through a table
// (`fileSystemCalls`), so that tests can make any one step fail and check that nothing was lost.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <optional>
#include <string>
#include <string_view>

namespace vx {

// The step of a write that failed.
enum class FileStep { None, Create, Write, Chown, Chmod, Sync, Rename, Backup, Open };

struct AtomicWriteResult {
    bool ok = false;
    int error = 0;          // errno of the step that failed
    FileStep failedStep = FileStep::None;
    bool inPlace = false;   // the file was rewritten where it stands (see replaceFileContents)
    std::string keptCopy;   // a copy of the old contents left behind when a failed write could not be undone

    static AtomicWriteResult failed(int error, FileStep step, bool inPlace = false) {
        AtomicWriteResult result;
        result.error = error;
        result.failedStep = step;
        result.inPlace = inPlace;
        return result;
    }
    static AtomicWriteResult succeeded(bool inPlace = false) {
        AtomicWriteResult result;
        result.ok = true;
        result.inPlace = inPlace;
        return result;
    }
};

// The steps of a save that can fail. Programs never change the table; tests swap one entry to
// make that step fail.
struct FileSystemCalls {
    ssize_t (*write)(int, const void*, size_t) = ::write;
    int (*fsync)(int) = ::fsync;
    int (*rename)(const char*, const char*) = ::rename;
    int (*fchown)(int, uid_t, gid_t) = ::fchown;
    int (*fchmod)(int, mode_t) = ::fchmod;
};
FileSystemCalls& fileSystemCalls();

// What the new file takes over from the one it replaces: owner, group, every mode bit (setuid,
// setgid and sticky too) and, from `xattrSource`, the extended attributes (ACLs among them) where
// the file system keeps them.
struct KeptAttributes {
    uid_t owner = 0;
    gid_t group = 0;
    mode_t mode = 0;
    std::string xattrSource;
};

// Writes bytes to path through a temporary sibling, fsync, rename and a flush of the folder.
// The new file gets `mode` when given, else what a freshly created file gets (0666 less the umask).
// On failure the target is untouched and the temporary file removed.
AtomicWriteResult writeFileAtomically(const std::string& path, std::string_view bytes,
                                      std::optional<mode_t> mode = std::nullopt);
// The same, the new file taking over the attributes of the old one. The temporary file is private
// (0600) until the bytes are in it.
AtomicWriteResult writeFileAtomically(const std::string& path, std::string_view bytes, const KeptAttributes& keep);

// Writes all of `bytes`, retrying short writes; false with errno set on an error.
bool writeAllBytes(int fd, std::string_view bytes);

// The path with symbolic links resolved, or the path itself when it does not exist yet.
std::string resolvedPath(const std::string& path);

// The folder part of a path ("." for a bare name, "/" for a file at the root).
std::string parentFolder(const std::string& path);

}  // namespace vx

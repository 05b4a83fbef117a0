// The indexer process's work: it reads the editor's messages from its connection and keeps the
// named project indexes up to date, one job at a time on a worker thread, so that a new message
// (a project suspended or closed) can stop a scan that is under way.
//
//   VXBurrowerProjectOpen, VXBurrowerProjectResume  scan the project (new and changed files only)
//   VXBurrowerProjectSuspend                         stop its scan; forget its waiting jobs
//   VXBurrowerProjectClose                           the same, then close its database
//   VXBurrowerFileIndex                              index a document's text (a newer text for the
//                                                    same file replaces one still waiting)
//
// Each finished job is answered ("VXBurrowerProjectIndexed", "VXBurrowerFileIndexed").
#pragma once

#include <string>

namespace vx {

struct BurrowerOptions {
    std::string socketPath;
    std::string object;  // "burrower-<editor pid>": messages for any other object are ignored
    long parent = 0;     // the editor's pid: the indexer ends when it does
};

// Runs until the editor closes the connection; the process's exit status.
int VXRunBurrower(const BurrowerOptions& options);

}  // namespace vx

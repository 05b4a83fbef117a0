// Symbol extraction through universal-ctags: files are handed to ctags in batches (one process
// reads a whole list of files, never one process per file), its JSON lines are read as they
// arrive and grouped per file.
//
// Several processes may run side by side over parts of the list; their results are handed to
// the caller on the calling thread, one file at a time, so that the caller can write them into
// a database without locking.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vx {

// One tag as ctags reports it.
struct CtagsTag {
    std::string name;
    std::string pattern;   // "/^text of the line$/" (or a line number for some parsers)
    std::string language;  // ctags' language name: "C++", "Python"
    std::string kind;      // the long kind name: "function", "class"
    std::string scope;     // the enclosing symbol's qualified name, "" at the top
    std::string scopeKind;
    std::string signature;
    int64_t line = 0;      // 1-based
};

// All tags ctags found in one file, in the order it reported them.
struct CtagsFileTags {
    std::string path;
    std::vector<CtagsTag> tags;
};

// Reads one line of ctags' JSON output; nothing for lines that are not tags (the program line,
// errors, malformed text).
std::optional<std::pair<std::string, CtagsTag>> VXParseCtagsLine(std::string_view line);

// The line's text inside a ctags pattern: "/^  int x;$/" → "  int x;", and whether the pattern
// held the whole line (ctags cuts long ones short); "" for a pattern that is a line number.
std::string VXLineOfCtagsPattern(std::string_view pattern, bool* anchoredAtEnd = nullptr);

// The full path of the ctags program found on PATH, or "" when there is none.
std::string VXCtagsExecutable();

struct CtagsRun {
    // Processes to run side by side (at least 1); each gets an equal share of the files.
    unsigned jobs = 1;
    // Forces a language for every file (ctags' name), for text whose file name says nothing.
    std::string forcedLanguage;
};

// Runs ctags over the files and calls `onFile` on this thread for every file that had tags. False
// when ctags could not be started or ended with an error.
bool VXRunCtags(const std::vector<std::string>& files, const CtagsRun& run,
                const std::function<void(CtagsFileTags&&)>& onFile);

// ctags' own spelling of a language name given in any case ("python" → "Python"), or "" when
// ctags has no parser of that name. The list is read once per process.
std::string VXCtagsLanguageNamed(std::string_view name);

}  // namespace vx

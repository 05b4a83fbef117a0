// Which folder is the project of a file or folder the user opens.
//
// A root is *strong* when a marker says so:
//   - version control: the nearest folder above holding ".git" (a folder, or the file a worktree
//     or submodule has), ".hg", ".svn", ".bzr", "_darcs" or ".fslckout"; it wins over everything
//     below it, so a build file inside a repository never splits the repository up;
//   - otherwise a build or package file: "CMakeLists.txt", "meson.build", "configure.ac",
//     "Makefile", "GNUmakefile", "package.json", "Cargo.toml", "pyproject.toml", "setup.py",
//     "go.mod", "pom.xml", "build.gradle", "build.gradle.kts", "Gemfile", "composer.json",
//     "mix.exs", "stack.yaml", "dune-project", "build.zig", "Package.swift". Folders of one build
//     nest ("CMakeLists.txt" in every source folder, a Cargo workspace), so the root climbs while
//     the folder above holds the same file.
// Without a marker the root is inferred: the folder itself, or the folder a file is in.
#pragma once

#include <string>

namespace vx {

// The project folder for `path` (standardized, absolute); `wasStrongProject` says whether a
// marker decided it.
std::string detectProjectURLForURL(const std::string& path, bool& wasStrongProject);

// The name of a project folder's symbol index: the folder's name and a hash of its path
// ("app-3f09c2d1a4b5e6f7"), stable across runs.
std::string VXProjectIndexNameForDirectory(const std::string& directory);

// An absolute path with "." and ".." resolved and no trailing "/" (links not followed).
std::string VXProjectStandardizedPath(const std::string& path);

}  // namespace vx

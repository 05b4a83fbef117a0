// The filter that decides which paths of a project are worth indexing for quick open: object
// files, archives, images, editor droppings, version-control and build folders and everything
// inside project bundles are left out. The tables are compared against the lower-cased relative
// path, so all their entries are lower case.
#pragma once

#include <string_view>
#include <vector>

namespace vx {

// Splits a relative path at "/" into its components, dropping empty ones (a leading, doubled or
// trailing "/" makes none).
void splitPathComponents(std::string_view path, std::vector<std::string_view>& components);

// The extension of one path component: the text after its last ".", or nothing. A name whose only
// dot is its first byte (".profile") has no extension: it is a hidden name, not a type.
std::string_view pathExtension(std::string_view component);

// Answers whether the lower-cased relative path is indexed. On the way it hands back the path's
// components (views into `lowerPath`); they are filled in once the path passes the per-file
// tests, so a path rejected by its extension or name may leave them empty.
bool pathIsGood(std::string_view lowerPath, std::vector<std::string_view>& components);

}  // namespace vx

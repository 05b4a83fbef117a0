// Where the program keeps its data and finds its bundled definitions.
//
//   user data (application support)  $VX_HOME, else $XDG_DATA_HOME/Vellumex, else ~/.local/share/Vellumex
//   configuration (user defaults)     $VX_HOME, else $XDG_CONFIG_HOME/vellumex, else ~/.config/vellumex
//   bundled truffles                  $VX_TRUFFLES, else <prefix>/share/vellumex/truffles beside the
//                                     installed program, else the source tree's truffles/ folder
#pragma once

#include <string>

namespace vx {

std::string userDataDirectory();
std::string userConfigDirectory();
std::string bundledTrufflesDirectory();
// The user's own truffles: <user data>/Truffles.
std::string userTrufflesDirectory();

// Creates a folder and its parents; true when it exists afterwards.
bool makeDirectories(const std::string& path);

}  // namespace vx

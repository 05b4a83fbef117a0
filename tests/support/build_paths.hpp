#pragma once
// Where this checkout and this build keep things the tests need. The values live in one source
// file generated into the build tree, so every other test object is byte-identical between
// checkouts and the compiler cache can share it.

namespace vx::test {
extern const char* const kSourceDir;    // the checkout's root
extern const char* const kTestDataDir;  // tests/data
extern const char* const kVxBinary;     // the built vx program
extern const char* const kBurrowerPath; // the built indexer
} // namespace vx::test

#define VX_SOURCE_DIR ::vx::test::kSourceDir
#define VX_TEST_DATA_DIR ::vx::test::kTestDataDir
#define VX_BINARY ::vx::test::kVxBinary
#define VX_BURROWER_PATH ::vx::test::kBurrowerPath

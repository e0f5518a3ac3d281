#include "platform/links.h"

#include <gtest/gtest.h>

#include "support/directory_link.h"
#include "support/scratch_directory.h"

namespace platform {
namespace {

namespace fs = std::filesystem;
using patcher::DirectoryLink;
using patcher::ReadWhole;
using patcher::ScratchDirectory;
using patcher::WriteWhole;

// The cleanup relies on the removal: the standard library takes the link away or leaves it (under Wine), and
// never reaches through it.
TEST(LinksContract, OnlyTheEntryItselfIsALinkAndIsRemoved) {
  const ScratchDirectory directory;
  fs::create_directory(directory / "folder");
  WriteWhole(directory / "folder" / "file", "content");
  for (const char* other : {"folder", "folder/file", "missing", "missing/below"}) {
    EXPECT_FALSE(IsLink(directory / other)) << other;
  }
  const DirectoryLink link(directory / "link", directory / "folder");
  ASSERT_TRUE(link.IsThere());
  EXPECT_TRUE(IsLink(directory / "link"));
  EXPECT_FALSE(IsLink(directory / "link" / "file")) << "what a link leads to is itself no link";
  std::error_code error;
  const bool removed = fs::remove(directory / "link", error);
  EXPECT_EQ(fs::exists(directory / "link"), !removed);
  EXPECT_EQ(ReadWhole(directory / "folder" / "file"), "content");
}

}  // namespace
}  // namespace platform

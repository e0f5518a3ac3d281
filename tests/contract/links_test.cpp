#include "platform/links.h"

#include <gtest/gtest.h>

#include "support/directory_link.h"
#include "support/scratch_directory.h"

namespace platform {
namespace {

namespace fs = std::filesystem;
using patcher::LinkToDirectoryBeside;
using patcher::ReadWhole;
using patcher::ScratchDirectory;
using patcher::WriteWhole;

TEST(LinksContract, OnlyTheEntryItselfCounts) {
  const ScratchDirectory directory;
  fs::create_directory(directory / "folder");
  WriteWhole(directory / "folder" / "file", "content");
  EXPECT_FALSE(IsLink(directory / "folder"));
  EXPECT_FALSE(IsLink(directory / "folder" / "file"));
  EXPECT_FALSE(IsLink(directory / "missing"));
  EXPECT_FALSE(IsLink(directory / "missing" / "below"));

  ASSERT_TRUE(LinkToDirectoryBeside(directory / "link", directory / "folder"));
  EXPECT_TRUE(IsLink(directory / "link"));
  EXPECT_FALSE(IsLink(directory / "link" / "file")) << "what a link leads to is itself no link";
}

// What the cleanup relies on: the standard library's removal of one entry takes a link away, not its target.
TEST(LinksContract, RemovingALinkLeavesWhatItLeadsTo) {
  const ScratchDirectory directory;
  fs::create_directory(directory / "folder");
  WriteWhole(directory / "folder" / "file", "content");
  ASSERT_TRUE(LinkToDirectoryBeside(directory / "link", directory / "folder"));
  std::error_code error;
  EXPECT_TRUE(fs::remove(directory / "link", error)) << error.message();
  EXPECT_FALSE(fs::exists(directory / "link"));
  EXPECT_EQ(ReadWhole(directory / "folder" / "file"), "content");
}

}  // namespace
}  // namespace platform

#include "control/page_content.h"

#include <gtest/gtest.h>

namespace patcher {
namespace {

TEST(PageContent, TheLastComponentOfAnAddressNamesTheImage) {
  const struct {
    const char* address;
    int resource;  // 0: none
  } kCases[] = {
      {"https://assets.tolmira.example/logo.png?x=/panel.png#led-red.png", 201},
      {"https://assets.tolmira.example/no/such/folder/panel.png", 202},
      {"https://assets.tolmira.example/background.jpg#", 200},
      {"led-amber.png", 208},
      {"https://assets.tolmira.example/LOGO.PNG", 0},
      {"https://assets.tolmira.example/logo.png/", 0},
      {"https://assets.tolmira.example/", 0},
      {"https://assets.tolmira.example/%6Cogo.png", 0},
      {"https://assets.tolmira.example/?logo.png", 0},
      {"", 0},
  };
  for (const auto& [address, resource] : kCases) {
    const Asset* asset = FindAsset(address);
    EXPECT_EQ(asset != nullptr ? asset->resource : 0, resource) << address;
  }
}

TEST(PageContent, NothingIsServedThatTheProgramDoesNotCarry) {
  // The tests carry no images.
  EXPECT_FALSE(ServeAsset("https://assets.tolmira.example/logo.png"));
}

TEST(PageContent, OnlyTheHandedOverDocumentIsTheLaunchersOwn) {
  for (const char* own : {"about:blank", "data:text/html;charset=utf-8;base64,PGh0bWw+"}) {
    EXPECT_TRUE(IsOwnAddress(own)) << own;
  }
  for (const char* foreign : {"https://tolmira.example/", "http://about:blank/", "file:///C:/x.html",
                              "javascript:0", "blob:null/1", "ABOUT:blank", ""}) {
    EXPECT_FALSE(IsOwnAddress(foreign)) << foreign;
  }
}

}  // namespace
}  // namespace patcher

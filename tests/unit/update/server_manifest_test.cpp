#include "update/server_manifest.h"

#include <gtest/gtest.h>

#include "update/manifest_signature.h"

namespace patcher {
namespace {

std::string Changed(std::string text, std::string_view part, std::string_view other) {
  return text.replace(text.find(part), part.size(), other);
}

TEST(ServerManifestTest, OnlyWhatAKeyHasSignedIsAccepted) {
  const auto own = platform::MakeSigningKey();
  const auto spare = platform::MakeSigningKey();
  const auto foreign = platform::MakeSigningKey();
  ASSERT_TRUE(own && spare && foreign);
  const platform::PublicKey keys[] = {own->publicKey, spare->publicKey};
  const std::string value = R"({"version":1,"sequence":5,"files":[{"path":"a}\"","size":1}],"sequence":9})";
  const std::string line = Sign(value, *own);
  const std::string good = value + "\n" + line;
  const std::string none = "no signature";
  const std::string bad = "not signed by a key of this launcher";
  const std::pair<std::string, std::string> cases[] = {
      {good, ""},
      {value + line, ""},
      {value + "\r\n\n " + line, ""},
      {value + "\n" + Sign(value, *spare), ""},
      {good + "\n<!-- served by a proxy -->", ""},
      {good.substr(0, good.size() - 1), ""},
      {value + "\n" + Changed(line, "}\n", ", \"signature\": 5}\r\n"), ""},
      {value + "\n" + Sign(value, *foreign), bad},
      {value + "\n" + Sign(value, *foreign) + line, bad},
      {Changed(good, "\"sequence\":5", "\"sequence\":6"), bad},
      {" " + good, bad},
      {value + "\n" + Sign(value + "\n", *own), bad},
      {value + "\n" + Changed(line, line.substr(20, 2), line.substr(20, 2) == "00" ? "01" : "00"), bad},
      {value + "\n" + Changed(line, line.substr(15, 128), std::string(128, '0')), bad},
      {value, none},
      {good.substr(0, good.size() - 2), none},
      {value + "\nx " + line, none},
      {value + "\n" + Changed(line, "}\n", "} x\n"), none},
      {value + "\n" + Changed(line, "\"signature\"", "\"signature\": 5, \"signature\""), none},
      {value + "\n" + Changed(line, line.substr(15, 2), ""), none},
      {value + "\n[" + line + "]", none},
      {value + "\n" + Changed(line, "{", "{" + std::string(1000, ' ')), none},
  };
  for (const auto& [text, fault] : cases) {
    PatchManifest manifest;
    std::string error;
    ASSERT_TRUE(ParsePatchManifest(text, manifest, error)) << text;
    EXPECT_EQ(SignatureFault(text, manifest, keys), fault) << text;
  }
  EXPECT_THROW(static_cast<void>(Sign(value, {own->secret, foreign->publicKey})), std::runtime_error);
}

TEST(ServerManifestTest, AnEqualSequenceIsAcceptedAndALauncherWithoutADigestRemoved) {
  PatchManifest manifest;
  manifest.sequence = 5;
  EXPECT_EQ(SequenceFault(manifest, 5), "");
  EXPECT_FALSE(RemoveUnverifiedLauncher(manifest));
  manifest.patcherUrl = "launcher";
  manifest.patcherSha256 = "digest";
  EXPECT_FALSE(RemoveUnverifiedLauncher(manifest));
  manifest.patcherSha256.clear();
  EXPECT_TRUE(RemoveUnverifiedLauncher(manifest));
  EXPECT_EQ(manifest.patcherUrl, "");
}

}  // namespace
}  // namespace patcher

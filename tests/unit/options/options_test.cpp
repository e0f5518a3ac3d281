#include <algorithm>
#include <set>
#include <sstream>
#include <tuple>

#include <gtest/gtest.h>

#include "options/option_table.h"
#include "options/options_exchange.h"
#include "options/render_tuning.h"
#include "options/resolutions.h"
#include "platform/text.h"
#include "support/scratch_directory.h"

namespace patcher {
namespace {

using platform::ScreenSize;

MiniJson::Value Json(const std::string& text) {
  std::size_t position = 0;
  return MiniJson::Parse(text, position);
}

TEST(TuningTableTest, RowsAreValid) {
  std::set<std::string> keys;
  for (const OptionDef& row : GameOptions::kDefs) EXPECT_TRUE(keys.insert(row.iniKey).second);
  for (const TuneDef& row : DX11TuneKeys) {
    EXPECT_TRUE(keys.insert(row.key).second) << row.key;
    EXPECT_EQ(TuneClamp(row, row.def), row.def) << row.key;
    EXPECT_LT(static_cast<std::size_t>(row.group), DX11TuneGroups.size()) << row.key;
    EXPECT_EQ(std::string(row.label).find_first_of("\"\\"), std::string::npos) << row.key;
  }
}

TEST(ResolutionsTest, ListsFixedSizesThatFitAndTheCurrentSize) {
  using Sizes = std::vector<ScreenSize>;
  EXPECT_EQ(ListResolutions({1366, 768}, {1000, 700}),
            (Sizes{{800, 600}, {1000, 700}, {1024, 768}, {1280, 720}, {1366, 768}}));
  EXPECT_EQ(ListResolutions({0, 0}, {1920, 1080}), (Sizes{{800, 600}, {1920, 1080}}));
  EXPECT_EQ(ListResolutions({640, 2000}, {800, 600}), (Sizes{{800, 600}}));
  EXPECT_EQ(ListResolutions({1200, 700}, {0, 900}), (Sizes{{800, 600}}));
  EXPECT_EQ(ListResolutions({9999, 9999}, {3840, 2160}).size(), 15u);
  EXPECT_EQ(ListResolutions({9999, 9999}, {640, 480}).front(), (ScreenSize{640, 480}));
}

class ExchangeTest : public testing::Test {
 protected:
  std::string Message() const { return platform::WideToUtf8(BuildOptionsMessage(path).text); }

  ScratchDirectory directory;
  std::filesystem::path path = directory / "ostu.ini";
};

TEST_F(ExchangeTest, DefaultsAreShownWithoutAFileAndAFirstSaveWritesThem) {
  std::string text = Message();
  const ScreenSize screen = platform::PrimaryScreenSize();
  EXPECT_TRUE(text.starts_with(R"({"type":"options","iniExists":false,"resolutions":[[800,600],[)")) << text;
  const std::string parts[] = {
      R"("tune":[{"id":"exposure","label":"Exposition","hint":"Luminosite generale de la scene avant les )"
      R"(couleurs.","def":0.96,"min":0.2,"max":3,"step":0.01,"kind":1,"group":0},{"id":"contrast",)"
      R"("label":"Contraste","hint":null,)",
      "\"step\":0.0001,",
      "\"group\":7}],\"values\":{\"resWidth\":" + std::to_string(screen.width) +
          ",\"resHeight\":" + std::to_string(screen.height) + ",\"fullscreen\":1,\"fpsLimit\":0,",
      ",\"windowAlpha\":255,\"exposure\":0.96,"};
  for (const std::string& part : parts) EXPECT_NE(text.find(part), std::string::npos) << part << text;
  std::ostringstream values;
  Json(text).Find("values")->Write(values, 0);
  EXPECT_TRUE(SaveOptions(path, Json(values.str())));
  const std::string saved = ReadWhole(path);
  EXPECT_EQ(std::count(saved.begin(), saved.end(), '\n'), 80);
  EXPECT_EQ(Message(), text.replace(text.find("false"), 5, "true")) << "what was saved is shown";
}

TEST_F(ExchangeTest, ThePageIsShownValuesWithinTheirBounds) {
  const auto width = static_cast<double>(platform::PrimaryScreenSize().width);
  const std::tuple<const char*, const char*, double> cases[] = {{"texture 7", "texture", 2},
                                                                {"texture -1", "texture", 0},
                                                                {"fpslimit 90", "fpsLimit", 90},
                                                                {"SFXRenderOff 0", "spellSfx", 1},
                                                                {"SFXRenderOff 5", "spellSfx", 0},
                                                                {"ZOOMLIMIT -3", "freeZoom", 1},
                                                                {"exposure 9", "exposure", 3},
                                                                {"temperature -0.5", "temperature", -0.5},
                                                                {"shadowbias 0.0021", "shadowbias", 0.0021},
                                                                {"contrast nan", "contrast", 1.12},
                                                                {"resolution 1000 700", "resWidth", 1000},
                                                                {"resolution 800 0", "resWidth", width},
                                                                {"resolution -1 600", "resWidth", width},
                                                                {"resolution 800", "resWidth", width}};
  for (const auto& [line, id, shown] : cases) {
    WriteWhole(path, line);
    EXPECT_EQ(Json(Message()).Find("values")->Find(id)->AsNumber(-99), shown) << line;
  }
  WriteWhole(path, "resolution 1000 700");
  EXPECT_NE(Message().find("[800,600],[1000,700],"), std::string::npos);
}

TEST_F(ExchangeTest, ASaveHoldsValuesWithinTheirBoundsAndDropsOthers) {
  const std::pair<const char*, const char*> cases[] = {
      {R"({"fpsLimit":5000,"texture":1.9,"spellSfx":0,"vsync":"1","shadow":null,"exposure":0.123456789,)"
       R"("contrast":1e300,"bloomint":-1e300,"toon":[],"resWidth":639,"resHeight":480})",
       "fpslimit 1000\r\nvsync 0\r\ntexture 1\r\nshadow 2\r\nSFXRenderOff 1\r\nexposure 0.2\r\ncontrast 2\r\n"
       "bloomint 0\r\ntoon 0.5\r\n"},
      {R"({"fpsLimit":3e9,"texture":-0.9,"freeZoom":0.5,"windowAlpha":2147483647.5,"exposure":0.523456789})",
       "fpslimit 0\r\ntexture 0\r\nZOOMLIMIT 1\r\nWindowAlpha 255\r\nexposure 0.523457\r\n"},
      {R"({"freeZoom":3e9,"resWidth":640,"resHeight":480})", "ZOOMLIMIT 0\r\nresolution 640 480\r\n"},
      {R"({"resWidth":16384.9,"resHeight":16384})", "resolution 16384 16384\r\n"},
      {R"({"resWidth":16385,"resHeight":700})", ""},
      {R"({"resWidth":700,"resHeight":479.9})", ""},
      {R"({"resWidth":700,"resHeight":16385})", ""},
      {R"({"resWidth":"700","resHeight":700})", ""},
      {R"({"resWidth":700,"unknown":1})", ""},
      {"[]", ""}};
  for (const auto& [sent, lines] : cases) {
    WriteWhole(path, "a\n");
    EXPECT_TRUE(SaveOptions(path, Json(sent)));
    EXPECT_EQ(ReadWhole(path), std::string("a\r\n") + lines) << sent;
  }
}

}  // namespace
}  // namespace patcher

#include <algorithm>
#include <clocale>
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

TEST(TuningTableTest, RowsAreSound) {
  std::set<std::string> keys;
  for (const OptionDef& row : GameOptions::kDefs) EXPECT_TRUE(keys.insert(row.iniKey).second);
  for (const TuneDef& row : DX11TuneKeys) {
    EXPECT_TRUE(keys.insert(row.key).second) << row.key;
    EXPECT_EQ(TuneClamp(row, row.def), row.def) << row.key;
    EXPECT_LT(static_cast<std::size_t>(row.group), DX11TuneGroups.size()) << row.key;
    EXPECT_EQ(std::string(row.label).find_first_of("\"\\"), std::string::npos) << row.key;
  }
}

TEST(OptionTableTest, ValuesOfFileAndPage) {
  const auto row = [](const std::string& id) {
    for (const OptionDef& option : GameOptions::kDefs) {
      if (option.id == id) return option;
    }
    throw std::out_of_range(id);
  };
  const std::tuple<const char*, std::int32_t, std::int32_t> reads[] = {
      {"texture", 7, 2},   {"texture", -1, 0},   {"windowAlpha", 300, 255},
      {"spellSfx", 0, 1},  {"spellSfx", 5, 0},   {"freeZoom", 1, 0},
      {"freeZoom", -3, 1}, {"fpsLimit", 90, 90}, {"fpsLimit", 1001, 1000}};
  for (const auto& [id, file, page] : reads) EXPECT_EQ(OptionToPage(row(id), file), page) << id << file;
  const std::tuple<const char*, double, std::int32_t> saves[] = {
      {"texture", 1.9, 1},      {"texture", -0.9, 0},
      {"fpsLimit", 5000, 1000}, {"fpsLimit", 3e9, 0},
      {"fpsLimit", 1e300, 0},   {"freeZoom", 1, 0},
      {"freeZoom", 0.5, 1},     {"freeZoom", 3e9, 0},
      {"spellSfx", 0, 1},       {"windowAlpha", 2147483647.5, 255}};
  for (const auto& [id, page, file] : saves) EXPECT_EQ(OptionFromPage(row(id), page), file) << id << page;
}

TEST(ResolutionsTest, FixedSizesThatFitAndTheCurrentOne) {
  using Sizes = std::vector<ScreenSize>;
  EXPECT_EQ(ListResolutions({1366, 768}, {1000, 700}),
            (Sizes{{800, 600}, {1000, 700}, {1024, 768}, {1280, 720}, {1366, 768}}));
  EXPECT_EQ(ListResolutions({0, 0}, {1920, 1080}), (Sizes{{800, 600}, {1920, 1080}}));
  EXPECT_EQ(ListResolutions({640, 2000}, {800, 600}), (Sizes{{800, 600}}));
  EXPECT_EQ(ListResolutions({1200, 700}, {0, 900}), (Sizes{{800, 600}}));
  EXPECT_EQ(ListResolutions({9999, 9999}, {3840, 2160}).size(), 15u);
  EXPECT_EQ(ListResolutions({9999, 9999}, {640, 480}).front(), (ScreenSize{640, 480}));
}

TEST(TuningTest, FormatAndBounds) {
  const std::pair<float, const char*> cases[] = {{0.0001f, "0.0001"},
                                                 {0.123456789f, "0.123457"},
                                                 {0.00001f, "1e-05"},
                                                 {999999, "999999"},
                                                 {1e6f, "1e+06"}};
  for (const auto& [value, text] : cases) EXPECT_EQ(TuneFormat(value), text);
  SettingsFile file;
  file.lines = {"exposure 9", "temperature -0.5", "contrast nan", "toon -inf"};
  for (const TuneDef& row : DX11TuneKeys) {
    const std::string key = row.key;
    const float expected = key == "exposure" ? row.max : key == "temperature" ? -0.5f : row.def;
    EXPECT_EQ(TuneRead(file, row), expected) << key;
  }
}

class ExchangeTest : public testing::Test {
 protected:
  std::string Message() const { return platform::WideToUtf8(BuildOptionsMessage(path).text); }
  bool Save(const std::string& values) const { return SaveOptions(path, Json(values)); }

  /// Number of a member of the message's values.
  double Shown(const std::string& id) const {
    return Json(Message()).Find("values")->Find(id)->AsNumber(-99);
  }

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
  EXPECT_TRUE(Save(values.str()));
  const std::string saved = ReadWhole(path);
  EXPECT_EQ(std::count(saved.begin(), saved.end(), '\n'), 80);
  EXPECT_EQ(Message(), text.replace(text.find("false"), 5, "true")) << "what was saved is shown";
}

TEST_F(ExchangeTest, ValuesAreHeldWithinTheirBounds) {
  WriteWhole(path, "WindowAlpha 12\nresolution 1000 700\nfpslimit 1001\nSFXRenderOff 5\n");
  EXPECT_TRUE(
      Save(R"({"fpsLimit":5000,"texture":1.9,"spellSfx":0,"vsync":"1","shadow":null,"exposure":0.123456789,
                       "contrast":1e300,"bloomint":-1e300,"toon":[],"resWidth":639,"resHeight":480})"));
  EXPECT_EQ(
      ReadWhole(path),
      "WindowAlpha 12\r\nresolution 1000 700\r\nfpslimit 1000\r\nSFXRenderOff 1\r\nvsync 0\r\ntexture 1\r\n"
      "shadow 2\r\nexposure 0.2\r\ncontrast 2\r\nbloomint 0\r\ntoon 0.5\r\n");
  EXPECT_EQ(Shown("fpsLimit"), 1000);
  EXPECT_EQ(Shown("resWidth"), 1000);
  EXPECT_NE(Message().find("[800,600],[1000,700],"), std::string::npos);
  EXPECT_TRUE(Save(R"({"fpsLimit":90,"shadowbias":0.0021,"exposure":0.523456789})"));
  EXPECT_EQ(Shown("fpsLimit"), 90);
  EXPECT_EQ(Shown("shadowbias"), 0.0021);
  EXPECT_NE(ReadWhole(path).find("exposure 0.523457\r\n"), std::string::npos);
}

TEST_F(ExchangeTest, ScreenSizesOutsideTheirBoundsAndForeignValuesChangeNothing) {
  const std::pair<const char*, const char*> cases[] = {
      {R"({"resWidth":640,"resHeight":480})", "640 480"},
      {R"({"resWidth":16384.9,"resHeight":16384})", "16384 16384"},
      {R"({"resWidth":16385,"resHeight":700})", "1 1"},
      {R"({"resWidth":700,"resHeight":479.9})", "1 1"},
      {R"({"resWidth":"700","resHeight":700})", "1 1"},
      {"[]", "1 1"},
      {R"({"unknown":1})", "1 1"}};
  for (const auto& [sent, size] : cases) {
    WriteWhole(path, "a\n\nresolution 1 1");
    EXPECT_TRUE(Save(sent));
    EXPECT_EQ(ReadWhole(path), std::string("a\r\n\r\nresolution ") + size + "\r\n") << sent;
  }
  for (const char* line : {"resolution 800 0", "resolution -1 600", "resolution 800"}) {
    WriteWhole(path, line);
    EXPECT_EQ(Shown("resWidth"), platform::PrimaryScreenSize().width) << line;
  }
}

/// Writes 1234.5 as 1.234,5.
class CommaLocale : public std::numpunct<char> {
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST_F(ExchangeTest, NumbersHaveAPointInEveryLocale) {
  const std::string message = Message();
  const std::string before = std::setlocale(LC_ALL, nullptr);
  for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8", "German_Germany.1252"}) {
    if (std::setlocale(LC_ALL, name) != nullptr) break;
  }
  const std::locale classic = std::locale::global(std::locale(std::locale::classic(), new CommaLocale));
  EXPECT_EQ(Message(), message);
  EXPECT_TRUE(Save(R"({"exposure":0.5,"casc2":3999.5})"));
  EXPECT_EQ(ReadWhole(path), "exposure 0.5\r\ncasc2 3999.5\r\n");
  EXPECT_EQ(Shown("casc2"), 3999.5);
  std::locale::global(classic);
  std::setlocale(LC_ALL, before.c_str());
}

}  // namespace
}  // namespace patcher

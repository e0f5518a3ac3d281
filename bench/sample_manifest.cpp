#include "sample_manifest.h"

#include <cstdint>
#include <random>
#include <sstream>

#include "minijson/minijson.h"

namespace {

std::string RandomDigest(std::mt19937_64& random) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string digest;
  for (int i = 0; i < 64; ++i) digest += kDigits[random() % 16];
  return digest;
}

std::string SamplePath(std::size_t number) {
  std::string digits = std::to_string(number);
  digits.insert(0, 6 - digits.size(), '0');
  return "data/zone" + digits.substr(0, 3) + "/textures/object_" + digits + ".dds";
}

}  // namespace

std::string SampleManifest(std::size_t files) {
  using MiniJson::Value;
  std::mt19937_64 random(1);
  Value list = Value::MakeArray();
  for (std::size_t number = 0; number < files; ++number) {
    const std::string digest = RandomDigest(random);
    Value file = Value::MakeObject();
    file.Set("path", Value::MakeString(SamplePath(number)));
    file.Set("size", Value::MakeNumber(static_cast<double>(random() % 50'000'000)));
    file.Set("sha256", Value::MakeString(digest));
    file.Set("url", Value::MakeString("files/" + digest.substr(0, 2) + "/" + digest.substr(2)));
    list.arrayItems.push_back(std::move(file));
  }
  Value document = Value::MakeObject();
  document.Set("version", Value::MakeNumber(7));
  document.Set("files", std::move(list));
  std::ostringstream out;
  document.Write(out, 0);
  return out.str();
}

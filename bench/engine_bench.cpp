// Benchmarks of processor time: reading a manifest, and saving the local record.

#include <algorithm>
#include <filesystem>
#include <random>

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include "minijson/minijson.h"
#include "sample_manifest.h"
#include "update/local_record.h"
#include "update/patch_manifest.h"

namespace {

constexpr std::size_t kManifestFiles = 50'000;
constexpr std::size_t kFilesPerSave = 50;

const std::string& Manifest() {
  static const std::string text = SampleManifest(kManifestFiles);
  return text;
}

void CountBytes(benchmark::State& state) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                          static_cast<std::int64_t>(Manifest().size()));
}

void MiniJsonParse(benchmark::State& state) {
  Manifest();
  for ([[maybe_unused]] auto _ : state) {
    std::size_t position = 0;
    benchmark::DoNotOptimize(MiniJson::Parse(Manifest(), position));
  }
  CountBytes(state);
}
BENCHMARK(MiniJsonParse)->Unit(benchmark::kMillisecond);

void NlohmannParse(benchmark::State& state) {
  Manifest();
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(nlohmann::json::parse(Manifest()));
  CountBytes(state);
}
BENCHMARK(NlohmannParse)->Unit(benchmark::kMillisecond);

void WholeManifest(benchmark::State& state) {
  Manifest();
  for ([[maybe_unused]] auto _ : state) {
    patcher::PatchManifest manifest;
    std::string error;
    if (!patcher::ParsePatchManifest(Manifest(), manifest, error)) state.SkipWithError(error.c_str());
    benchmark::DoNotOptimize(manifest);
  }
  CountBytes(state);
}
BENCHMARK(WholeManifest)->Unit(benchmark::kMillisecond);

/// The entries and saves of one install; `shuffled` for a manifest that is not sorted by path.
void RecordSaves(benchmark::State& state, bool shuffled) {
  const auto files = static_cast<std::size_t>(state.range(0));
  patcher::PatchManifest manifest;
  std::string error;
  if (!patcher::ParsePatchManifest(SampleManifest(files), manifest, error)) {
    state.SkipWithError(error.c_str());
    return;
  }
  if (shuffled) std::shuffle(manifest.files.begin(), manifest.files.end(), std::mt19937_64(1));
  const auto path = std::filesystem::temp_directory_path() /
                    ("bench_record_" + std::to_string(std::random_device{}()) + ".json");
  for ([[maybe_unused]] auto _ : state) {
    std::filesystem::remove(path);
    patcher::LocalRecord record(path);
    record.Load();
    for (std::size_t done = 1; done <= files; ++done) {
      record.Enter(manifest.files[done - 1].path, manifest.files[done - 1].sha256);
      if (done % kFilesPerSave == 0) record.SaveProgress();
    }
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * files));
  std::filesystem::remove(path);
}
BENCHMARK_CAPTURE(RecordSaves, sorted, false)
    ->Arg(10'000)
    ->Arg(20'000)
    ->Arg(40'000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(RecordSaves, shuffled, true)
    ->Arg(10'000)
    ->Arg(20'000)
    ->Arg(40'000)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace

BENCHMARK_MAIN();

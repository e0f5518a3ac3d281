#pragma once

#include <cstddef>
#include <string>

/// A manifest in the format of patch-publish, with `files` entries of about 240 bytes, sorted by path.
std::string SampleManifest(std::size_t files);

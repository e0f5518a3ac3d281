#include "update/program_file.h"

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/process.h"
#include "support/scratch_directory.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

/// A number in a header, lowest byte first.
struct Number {
  std::size_t at;
  std::size_t size;
  std::uint64_t value;
};

std::string Bytes(std::size_t size, const std::string& begin, const std::vector<Number>& numbers) {
  std::string bytes = begin;
  bytes.resize(size);
  for (const Number& number : numbers) {
    for (std::size_t i = 0; i < number.size; ++i) {
      bytes[number.at + i] = static_cast<char>(number.value >> (8 * i) & 255);
    }
  }
  return bytes;
}

/// Small programs whose last bytes are those of their name.
const std::pair<const char*, std::string> kPrograms[] = {
    {"PE32, a section", Bytes(280, "MZ",
                              {{60, 4, 64},
                               {64, 4, 0x4550},
                               {70, 2, 1},
                               {84, 2, 136},
                               {88, 2, 0x10B},
                               {148, 4, 264},
                               {180, 4, 5},
                               {240, 4, 16},
                               {244, 4, 264}})},
    {"PE32+, a certificate", Bytes(300, "MZ",
                                   {{60, 4, 64},
                                    {64, 4, 0x4550},
                                    {84, 2, 152},
                                    {88, 2, 0x20B},
                                    {196, 4, 5},
                                    {232, 4, 290},
                                    {236, 4, 10}})},
    {"PE32, names of symbols", Bytes(252, "MZ",
                                     {{60, 4, 64},
                                      {64, 4, 0x4550},
                                      {76, 4, 224},
                                      {80, 4, 1},
                                      {84, 2, 96},
                                      {88, 2, 0x10B},
                                      {242, 4, 10}})},
    {"ELF, 32 bits, a section", Bytes(180,
                                      std::string("\x7f"
                                                  "ELF\1\1",
                                                  6),
                                      {{28, 4, 52},
                                       {32, 4, 84},
                                       {42, 2, 32},
                                       {44, 2, 1},
                                       {46, 2, 40},
                                       {48, 2, 2},
                                       {128, 4, 1},
                                       {140, 4, 172},
                                       {144, 4, 8}})},
    {"ELF, 64 bits, a segment", Bytes(130,
                                      std::string("\x7f"
                                                  "ELF\2\1",
                                                  6),
                                      {{32, 8, 64}, {54, 2, 56}, {56, 2, 1}, {72, 8, 120}, {96, 8, 10}})},
    {"ELF, 64 bits, the table of sections",
     Bytes(256,
           std::string("\x7f"
                       "ELF\2\1",
                       6),
           {{40, 8, 128}, {58, 2, 64}, {60, 2, 2}, {196, 4, 8}, {216, 8, 9999}, {224, 8, 9999}})},
};

TEST(ProgramFileTest, AProgramWithoutItsLastBytesIsCut) {
  ScratchDirectory directory;
  const fs::path file = directory / "program";
  for (const auto& [name, program] : kPrograms) {
    WriteWhole(file, program + "overlay");
    EXPECT_EQ(ExamineProgram(file), ProgramFile::kWhole) << name;
    for (std::size_t size = program.size(); size > 0; --size) {
      fs::resize_file(file, size);
      const ProgramFile cut = size < 4 && name[0] == 'E' ? ProgramFile::kNone : ProgramFile::kCut;
      EXPECT_EQ(ExamineProgram(file), size == program.size() ? ProgramFile::kWhole
                                      : size < 2             ? ProgramFile::kNone
                                                             : cut)
          << name << ", " << size;
    }
  }
}

TEST(ProgramFileTest, WhatLinkersMakeIsWholeToItsLastByte) {
  ScratchDirectory directory;
  const fs::path file = directory / "copy";
  fs::copy_file(platform::OwnExecutablePath(), file);
  EXPECT_EQ(ExamineProgram(file), ProgramFile::kWhole);
  fs::resize_file(file, fs::file_size(file) - 1);
  EXPECT_EQ(ExamineProgram(file), ProgramFile::kCut);
}

TEST(ProgramFileTest, NoProgram) {
  ScratchDirectory directory;
  for (const char* text : {"", "M", "#!/bin/sh\n", "<html>",
                           "\x7f"
                           "EL"}) {
    WriteWhole(directory / "file", text);
    EXPECT_EQ(ExamineProgram(directory / "file"), ProgramFile::kNone) << text;
  }
  EXPECT_EQ(ExamineProgram(directory / "missing"), ProgramFile::kNone);
}

}  // namespace
}  // namespace patcher

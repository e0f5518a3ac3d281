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

std::string With(std::string bytes, const std::vector<Number>& numbers) {
  for (const Number& number : numbers) {
    for (std::size_t i = 0; i < number.size; ++i) {
      bytes[number.at + i] = static_cast<char>(number.value >> (8 * i) & 255);
    }
  }
  return bytes;
}

std::string Sized(std::string begin, std::size_t size) { return begin.append(size - begin.size(), '\0'); }

std::string Pe(std::size_t size, std::uint64_t optionalSize, std::uint64_t magic) {
  return With(Sized("MZ", size), {{60, 4, 64}, {64, 4, 0x4550}, {84, 2, optionalSize}, {88, 2, magic}});
}

std::string Elf64(std::size_t size) { return Sized("\177ELF\2\1", size); }

std::string Elf32(std::size_t size) {
  return With(Sized("\177ELF\1\1", size), {{42, 2, 32}, {44, 2, 1}, {46, 2, 40}, {48, 2, 2}});
}

/// Small programs whose last bytes are those of their name.
const std::pair<const char*, std::string> kPrograms[] = {
    {"PE32, a section",
     With(Pe(280, 136, 0x10B), {{70, 2, 1}, {148, 4, 264}, {180, 4, 5}, {240, 4, 16}, {244, 4, 264}})},
    {"PE32+, a certificate", With(Pe(300, 152, 0x20B), {{196, 4, 5}, {232, 4, 290}, {236, 4, 10}})},
    {"PE32, names of symbols",
     With(Pe(252, 96, 0x10B), {{76, 4, 224}, {80, 4, 1}, {180, 4, 4}, {242, 4, 10}})},
    {"ELF, 32 bits, a section",
     With(Elf32(180), {{28, 4, 52}, {32, 4, 84}, {128, 4, 1}, {140, 4, 172}, {144, 4, 8}})},
    {"ELF, 64 bits, a segment",
     With(Elf64(130), {{32, 8, 64}, {54, 2, 56}, {56, 2, 1}, {72, 8, 120}, {96, 8, 10}})},
    {"ELF, 64 bits, the table of sections",
     With(Elf64(256), {{40, 8, 128}, {58, 2, 64}, {60, 2, 2}, {196, 4, 8}, {216, 8, 9999}, {224, 8, 9999}})},
};

TEST(ProgramFileTest, ReportsAProgramWithoutItsLastBytes) {
  ScratchDirectory directory;
  const fs::path file = directory / "program";
  for (const auto& [name, program] : kPrograms) {
    WriteWhole(file, program + "overlay");
    EXPECT_EQ(ExamineProgram(file), ProgramFile::kComplete) << name;
    fs::resize_file(file, program.size());
    EXPECT_EQ(ExamineProgram(file), ProgramFile::kComplete) << name;
    for (std::size_t size = program.size() - 1; size >= 4; --size) {
      fs::resize_file(file, size);
      EXPECT_EQ(ExamineProgram(file), ProgramFile::kIncomplete) << name << ", " << size;
    }
  }
}

TEST(ProgramFileTest, LinkedProgramsAreCompleteAndOtherFilesAreNotPrograms) {
  ScratchDirectory directory;
  const fs::path file = directory / "copy";
  fs::copy_file(platform::OwnExecutablePath(), file);
  EXPECT_EQ(ExamineProgram(file), ProgramFile::kComplete);
  WriteWhole(directory / "pe", "MZ");
  WriteWhole(directory / "elf", Elf64(64));
  EXPECT_NE(HaveSameFormat(file, directory / "pe"), HaveSameFormat(file, directory / "elf"));
  fs::resize_file(file, fs::file_size(file) - 1);
  EXPECT_EQ(ExamineProgram(file), ProgramFile::kIncomplete);
  for (const char* text : {"", "M", "#!/bin/sh\n", "<html>", "\177EL"}) {
    WriteWhole(file, text);
    EXPECT_EQ(ExamineProgram(file), ProgramFile::kNone) << text;
  }
  EXPECT_EQ(ExamineProgram(directory / "missing"), ProgramFile::kNone);
}

}  // namespace
}  // namespace patcher

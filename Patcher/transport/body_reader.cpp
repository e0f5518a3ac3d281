#include "transport/body_reader.h"

#include <chrono>

namespace patcher {

bool BodyReader::Read(void* buffer, std::uint32_t size, std::uint32_t& read) {
  const auto begin = std::chrono::steady_clock::now();
  if (!ReadBlock(buffer, size, read)) return false;
  silent_ = read != 0 && !pace_.Count(std::chrono::steady_clock::now() - begin, read);
  return !silent_;
}

bool BodyReader::ReadBlock(void* buffer, std::uint32_t size, std::uint32_t& read) {
  read = 0;
  std::uint32_t available = 0;
  step_ = "QueryDataAvailable";
  error_ = request_.QueryDataAvailable(available);
  if (error_ != 0) return false;
  if (available == 0) return true;
  step_ = "ReadData";
  error_ = request_.ReadData(buffer, size, read);
  return error_ == 0;
}

std::string BodyReader::FailureLine(const std::string& path) const {
  if (silent_) return "Silent " + path;
  return std::string(step_) + " " + path + " err=" + std::to_string(error_);
}

}  // namespace patcher

#include "transport/file_download.h"

#include <array>
#include <cerrno>
#include <fstream>
#include <system_error>

#include "integrity/digest/sha256.h"
#include "platform/files.h"
#include "platform/links.h"
#include "platform/text.h"
#include "shared/retry_while_held.h"
#include "transport/body_reader.h"
#include "transport/debug_log.h"

namespace patcher {
namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kBlockSize = 65536;

fs::path WithSuffix(fs::path file, const char* suffix) {
  file += suffix;
  return file;
}

void LogWriteFailure(const fs::path& file, int error) {
  DebugLog::Write("write " + platform::BytesFromPath(file) + " : " + std::generic_category().message(error));
}

void LogTooLarge(const std::string& path, std::uint64_t limit) {
  DebugLog::Write("TooLarge " + path + " limit=" + std::to_string(limit));
}

/// Writes the body of one response to a temporary file.
class Transfer {
 public:
  Transfer(platform::HttpRequest& request, const std::string& path, const DownloadRules& rules)
      : path_(path), rules_(rules), reader_(request) {
    received_.announced = request.AnnouncedLength().has_value();
  }

  /// Writes the body to a new file `part`. Returns false if this or the transfer failed, and logs the reason.
  bool ReceiveTo(const fs::path& part, const std::error_code& directoryError) {
    std::ofstream file;
    // Unbuffered, because the blocks are large and write errors should be reported immediately.
    file.rdbuf()->pubsetbuf(nullptr, 0);
    file.open(part, std::ios::binary | std::ios::trunc);
    if (!file) {
      DebugLog::Write("ofstream " + platform::BytesFromPath(part) + " mkdir_ec=" + directoryError.message());
      return false;
    }
    bool complete = ReceiveBlocks(part, file);
    errno = 0;
    file.close();
    if (complete && file.fail()) {
      LogWriteFailure(part, errno);
      complete = false;
    }
    received_.digest = sha256_.FinishHex(hash_);
    return complete;
  }

  const ReceivedFile& Received() const { return received_; }

 private:
  bool ReceiveBlocks(const fs::path& part, std::ofstream& file) {
    std::array<char, kBlockSize> buffer;
    for (;;) {
      std::uint32_t read = 0;
      if (!reader_.Read(buffer.data(), kBlockSize, read)) {
        DebugLog::Write(reader_.FailureLine(path_));
        return false;
      }
      if (read == 0) return true;
      received_.size += read;
      if (received_.size > rules_.maxSize) {
        LogTooLarge(path_, rules_.maxSize);
        return false;
      }
      errno = 0;
      if (!file.write(buffer.data(), read)) {
        LogWriteFailure(part, errno);
        return false;
      }
      hash_.Update(buffer.data(), read);
      if (rules_.onBytes) rules_.onBytes(read);
    }
  }

  const std::string& path_;
  const DownloadRules& rules_;
  BodyReader reader_;
  Sha256 sha256_;
  platform::DigestHash hash_ = sha256_.BeginHash();
  ReceivedFile received_;
};

/// Moves or copies the complete temporary file to `destination`. Removes the temporary file in any case.
bool PutInPlace(const fs::path& part, const fs::path& destination) {
  const int moved = RetryWhileHeld([&] {
    // Move a file in use away first, so that only a file that cannot be moved causes a wait. If this fails,
    // the move below reports the error.
    static_cast<void>(MoveLockedTargetAside(destination));
    return platform::MoveReplacing(part, destination, true);
  });
  if (moved == 0) return true;

  const int error = platform::CopyOver(part, destination);
  std::error_code ignored;
  fs::remove(part, ignored);
  if (error == 0) return true;
  DebugLog::Write("rename+copy " + platform::BytesFromPath(destination) + " : " +
                  std::system_category().message(error));
  return false;
}

}  // namespace

bool ReceiveFile(std::optional<platform::HttpRequest> request, const std::string& path,
                 const fs::path& destination, const DownloadRules& rules, std::string& digest) {
  if (!request) {
    DebugLog::Write("OpenGet-null " + path);
    return false;
  }
  if (request->AnnouncedLength() > rules.maxSize) {
    LogTooLarge(path, rules.maxSize);
    return false;
  }

  // Created before the file, so that there is no file to remove if it raises.
  Transfer transfer(*request, path, rules);
  const fs::path part = WithSuffix(destination, ".part");
  std::error_code directoryError;
  fs::create_directories(destination.parent_path(), directoryError);
  std::error_code ignored;
  // The target of a link must not be overwritten.
  if (platform::IsLink(part)) fs::remove(part, ignored);
  const bool received = transfer.ReceiveTo(part, directoryError);
  request.reset();
  digest = transfer.Received().digest;
  if (!received || (rules.accept && !rules.accept(part, transfer.Received()))) {
    fs::remove(part, ignored);
    return false;
  }
  return PutInPlace(part, destination);
}

bool MoveLockedTargetAside(const fs::path& destination) {
  std::error_code error;
  if (!fs::exists(destination, error)) return true;
  if (platform::ProbeExclusiveWrite(destination) != platform::ExclusiveWrite::kRefused) return true;
  const fs::path oldFile = WithSuffix(destination, ".old");
  fs::remove(oldFile, error);
  return platform::MoveReplacing(destination, oldFile, false) == 0;
}

}  // namespace patcher

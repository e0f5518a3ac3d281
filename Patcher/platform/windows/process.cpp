#include <windows.h>

#include "platform/process.h"

#include <memory>

#include <shellapi.h>

#include "platform/text.h"
#include "platform/windows/native_text.h"
#include "platform/windows/owned_handle.h"

namespace platform {
namespace {

struct LocalDeleter {
  void operator()(wchar_t** memory) const { LocalFree(memory); }
};

}  // namespace

std::filesystem::path OwnExecutablePath() {
  wchar_t name[MAX_PATH] = {};
  const DWORD length = GetModuleFileNameW(nullptr, name, MAX_PATH);
  return std::wstring(name, length);
}

std::vector<std::string> CommandLineArguments(int, char**) {
  int count = 0;
  const std::unique_ptr<wchar_t*, LocalDeleter> words(CommandLineToArgvW(GetCommandLineW(), &count));
  std::vector<std::string> arguments;
  for (int i = 1; words && i < count; ++i) arguments.push_back(Utf8FromPath(words.get()[i]));
  return arguments;
}

std::string CommandLineText(int, char**) { return Utf8FromPath(GetCommandLineW()); }

void SurviveBrokenPipes() {}

int StartProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                 const std::filesystem::path& workingDirectory) {
  std::wstring commandLine = L'"' + program.native() + L'"';
  for (const std::string& argument : arguments) commandLine += L' ' + ToNative(Utf8ToWide(argument));
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr,
                      workingDirectory.c_str(), &startup, &process)) {
    return static_cast<int>(GetLastError());
  }
  const OwnedHandle thread(process.hThread);
  const OwnedHandle started(process.hProcess);
  return 0;
}

bool OpenInBrowser(const std::u16string& url) {
  const HINSTANCE result =
      ShellExecuteW(nullptr, L"open", ToNative(url).c_str(), nullptr, nullptr, SW_SHOWNORMAL);
  // ShellExecute returns a value above 32 for success.
  return reinterpret_cast<INT_PTR>(result) > 32;
}

void EndProcess(int code) {
  // WriteLine and WriteErrorLine leave nothing to flush.
  ExitProcess(static_cast<UINT>(code));
}

}  // namespace platform

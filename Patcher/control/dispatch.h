#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "control/host_operations.h"
#include "control/operation_guard.h"
#include "minijson/minijson.h"
#include "options/options_exchange.h"

namespace patcher {

/// The operations that requests of the page start. Every entry is filled.
struct OperationTable {
  std::function<void(HostWindow&)> runUpdate;                                       ///< on the update worker
  std::function<void(HostWindow&, bool repair)> runCheckOperation;                  ///< on a check worker
  std::function<void(HostWindow&)> fetchNews;                                       ///< on a news worker
  std::function<void()> launchClient;                                               ///< main thread
  std::function<void(const std::u16string&)> openExternalUrl;                       ///< main thread
  std::function<OptionsMessage(const std::filesystem::path&)> buildOptionsMessage;  ///< main thread
  std::function<bool(const std::filesystem::path&, const MiniJson::Value&)> saveOptions;  ///< main thread
  std::function<void()> selfUpdateSwap;                                                   ///< main thread
  std::function<bool()> clientExists;                                                     ///< any thread
};

/// Carries out the page's requests, allows one long operation at a time, starts workers and turns their
/// events into messages for the page. Main thread only. Outlives every worker.
class Dispatcher {
 public:
  Dispatcher(HostOperations& host, OperationTable operations);

  /// Carries out one request, unless the launcher is ending. Ignores a bad request. Never raises.
  void DispatchPageMessage(std::u16string_view text);

  /// Sends the page the message for one posted event, and frees the event's payload.
  void HandleUiEvent(const UiEvent& event);

  /// Called when the page has loaded. Sends the options, and starts the update run unless an operation is
  /// running.
  void NavigationCompleted();

 private:
  struct Action;
  static const Action kActions[];

  void Play(const MiniJson::Value& request);
  void Cancel(const MiniJson::Value& request);
  void Verify(const MiniJson::Value& request);
  void Repair(const MiniJson::Value& request);
  void GetNews(const MiniJson::Value& request);
  void OpenUrl(const MiniJson::Value& request);
  void WindowDrag(const MiniJson::Value& request);
  void WindowMinimize(const MiniJson::Value& request);
  void WindowMaximize(const MiniJson::Value& request);
  void WindowClose(const MiniJson::Value& request);
  void GetOptions(const MiniJson::Value& request);
  void SaveOptions(const MiniJson::Value& request);

  /// Ends the launcher after `lastOperation`, which may be empty. Later requests are ignored: `lastOperation`
  /// may show an error box, which processes the message queue.
  void End(const std::function<void()>& lastOperation);
  /// Runs a long operation on its own thread. Releases the guard and raises std::system_error if no thread
  /// can be started.
  void StartWorker(OperationLease lease, std::function<void(HostWindow&)> operation);
  void StartUpdateWorker();
  void StartCheckWorker(bool repair);
  void PushOptions();

  HostOperations& host_;
  const OperationTable operations_;
  OperationGuard guard_;
  bool canPlay_ = false;
  bool ending_ = false;
  bool formHasDefaults_ = false;  // the page's form has defaults, because the settings file was unreadable
};

}  // namespace patcher

// Takes the place of the web view's loader, of its web view and of the system's task bar. It shows nothing:
// it reports to its driver what the program does, and does to the program what the driver asks for. The
// interfaces are tables of functions at the slot numbers of their binary form, written without the product's
// declarations, so that a wrong order or parameter there is noticed.
#include <windows.h>

#include <algorithm>
#include <array>
#include <concepts>
#include <cstdlib>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <objbase.h>
#include <shobjidl.h>

#include "platform/hex_digits.h"
#include "platform/message_queue.h"
#include "platform/standard_streams.h"
#include "platform/text.h"

namespace stand_in {
namespace {

/// A command of the driver, read from standard input, or a report to it, written to standard output. Its
/// fields are UTF-8. The control character 1F ends each field, and 1E replaces a line feed in a field.
using Line = std::vector<std::string>;
constexpr char kFieldEnd = '\x1f';
constexpr char kLineFeed = '\x1e';

/// Main thread only.
void SendToDriver(const Line& line) {
  std::string text;
  for (const std::string& field : line) text += field + kFieldEnd;
  std::replace(text.begin(), text.end(), '\n', kLineFeed);
  platform::WriteLine(text);
}

std::string Text(const wchar_t* text) {
  return text != nullptr ? platform::WideToUtf8(reinterpret_cast<const char16_t*>(text)) : "(null)";
}

std::string Text(HWND window) { return IsWindow(window) ? "window" : "no window"; }

std::string Text(std::integral auto number) { return std::to_string(number); }

using Slots = std::array<void*, 61>;  // as many as the longest interface has

std::map<std::string, int> live;  // number of objects that exist, by kind

/// An object of any of the interfaces.
struct Object {
  void* const* table;
  const char* kind;
  ULONG references = 1;
  std::u16string text;        // address or message
  HRESULT textResult = S_OK;  // what the getter of `text` returns
  UINT64 number = 0;          // of a navigation, or the kind of a process that failed
  BOOL refused = FALSE;       // a navigation is cancelled, or a new window is handled by the program
  Line response;              // status, reason, headers and content

  Object(const Slots& slots, const char* name) : table(slots.data()), kind(name) { ++live[kind]; }
};

ULONG __stdcall AddRef(Object* self) { return ++self->references; }

ULONG __stdcall Release(Object* self) {
  if (--self->references > 0) return self->references;
  --live[self->kind];
  delete self;
  return 0;
}

/// Takes the place of every method that the program has no reason to call, and ends the process.
void __stdcall Trap() {
  SendToDriver({"trap"});
  TerminateProcess(GetCurrentProcess(), 99);
}

template <typename Function>
std::pair<std::size_t, void*> At(std::size_t slot, Function function) {
  return {slot, reinterpret_cast<void*>(function)};
}

/// The table of an interface.
Slots Table(std::initializer_list<std::pair<std::size_t, void*>> methods) {
  Slots slots;
  slots.fill(reinterpret_cast<void*>(&Trap));
  slots[1] = reinterpret_cast<void*>(&AddRef);
  slots[2] = reinterpret_cast<void*>(&Release);
  for (const auto& [slot, function] : methods) slots[slot] = function;
  return slots;
}

/// A name as an argument of a template.
template <std::size_t Size>
struct Name {
  char text[Size];
  constexpr Name(const char (&name)[Size]) { std::copy_n(name, Size, text); }
};

/// A method that only reports its call.
template <Name name, typename... Arguments>
HRESULT __stdcall Report(Object*, Arguments... arguments) {
  SendToDriver({name.text, Text(arguments)...});
  return S_OK;
}

HRESULT __stdcall GetText(Object* self, wchar_t** text) {
  *text = nullptr;
  if (self->textResult != S_OK) return self->textResult;
  const std::size_t bytes = (self->text.size() + 1) * sizeof(wchar_t);
  *text = static_cast<wchar_t*>(memcpy(CoTaskMemAlloc(bytes), self->text.c_str(), bytes));
  return S_OK;
}

template <typename Number>
HRESULT __stdcall GetNumber(Object* self, Number* number) {
  *number = static_cast<Number>(self->number);
  return S_OK;
}

HRESULT __stdcall Refuse(Object* self, BOOL refused) {
  self->refused = refused;
  return S_OK;
}

const Slots kRequest = Table({At(3, &GetText)});
const Slots kResponse = Table({});

HRESULT __stdcall GetRequest(Object* self, Object** request) {
  *request = new Object(kRequest, "request");
  (*request)->text = self->text;
  return S_OK;
}

HRESULT __stdcall PutResponse(Object* self, Object* response) {
  self->response = response->response;
  return S_OK;
}

/// What the program has handlers for.
struct Event {
  const wchar_t* handler;  // identifier of the handler's interface
  Slots arguments;
};
const std::map<std::string, Event> kEvents = {
    {"environment", {L"{4e8a3389-c9d8-4bd2-b6b5-124fee6cc14d}", {}}},
    {"controller", {L"{6c4819f3-c9b7-4260-8127-c9f5bde7f68c}", {}}},
    {"NavigationStarting",
     {L"{9adbe429-f36d-432b-9ddc-f8881fbd76e3}",
      Table({At(3, &GetText), At(8, &Refuse), At(9, &GetNumber<UINT64>)})}},
    {"NavigationCompleted", {L"{d33a35bf-1c49-4f98-93ab-006e0533fe1c}", Table({At(5, &GetNumber<UINT64>)})}},
    {"WebMessageReceived", {L"{57213f19-00e6-49fa-8e07-898ea01ecbd2}", Table({At(5, &GetText)})}},
    {"NewWindowRequested", {L"{d4c185fe-c81c-4989-97af-2d3fa7ab5651}", Table({At(6, &Refuse)})}},
    {"ProcessFailed", {L"{79e0aea4-990b-42d9-aa1d-0fcc2e5bc7f1}", Table({At(3, &GetNumber<int>)})}},
    {"WebResourceRequested",
     {L"{ab00b74c-15f1-4646-80e8-e76341d25d71}", Table({At(3, &GetRequest), At(5, &PutResponse)})}},
};

/// An object of the program, called through its table.
struct Handler {
  void* const* table;
};

template <typename... Arguments>
HRESULT Call(Handler* handler, std::size_t slot, Arguments... arguments) {
  using Function = HRESULT(__stdcall*)(Handler*, Arguments...);
  return reinterpret_cast<Function>(handler->table[slot])(handler, arguments...);
}

/// Whether a handler has its own interface and no other, and counts its references.
bool IsSound(Handler* handler, const wchar_t* id) {
  void* object = nullptr;
  GUID own{};
  IIDFromString(id, &own);
  for (const GUID& known : {own, IID_IUnknown}) {
    if (Call(handler, 0, &known, &object) != S_OK || object != handler) return false;
    Call(handler, 2);
  }
  if (Call(handler, 0, &IID_IStream, &object) != E_NOINTERFACE || object != nullptr) return false;
  return Call(handler, 1) == 2 && Call(handler, 2) == 1;
}

std::map<std::string, Handler*> handlers;  // by event; owned
HWND child = nullptr;                      // the web view's window
Object* view = nullptr;
std::string mode;  // which step fails
platform::MessageQueue* queue = nullptr;

/// Keeps a reference to the handler, in place of one that the program has registered with an earlier web
/// view.
void Keep(const std::string& event, Handler* handler) {
  SendToDriver({"handler", event, IsSound(handler, kEvents.at(event).handler) ? "sound" : "unsound"});
  Call(handler, 1);
  if (Handler* earlier = std::exchange(handlers[event], handler)) Call(earlier, 2);
}

template <Name event>
HRESULT __stdcall AddHandler(Object*, Handler* handler, INT64*) {
  Keep(event.text, handler);
  return S_OK;
}

/// Runs the step on the main thread, after the current message. Any thread.
void Later(std::function<void()> step) {
  const auto parameter = reinterpret_cast<std::intptr_t>(new std::function<void()>(std::move(step)));
  if (!queue->Post({WM_APP, 0, parameter})) std::abort();
}

/// Gives the program the object that it requested, or nothing if this is the step that fails.
void Finish(const char* event, const Slots& table, bool fails) {
  Object* made = fails ? nullptr : new Object(table, event);
  Call(handlers[event], 3, fails ? E_FAIL : S_OK, made);
  if (made != nullptr) Release(made);
  Call(handlers[event], 2);
  handlers.erase(event);
}

const Slots kView =
    Table({At(6, &Report<"navigate", const wchar_t*>), At(7, &AddHandler<"NavigationStarting">),
           At(15, &AddHandler<"NavigationCompleted">), At(25, &AddHandler<"ProcessFailed">),
           At(33, &Report<"message", const wchar_t*>), At(34, &AddHandler<"WebMessageReceived">),
           At(44, &AddHandler<"NewWindowRequested">), At(55, &AddHandler<"WebResourceRequested">),
           At(57, &Report<"filter", const wchar_t*, int>)});

HRESULT __stdcall PutBounds(Object*, RECT bounds) {
  MoveWindow(child, bounds.left, bounds.top, bounds.right - bounds.left, bounds.bottom - bounds.top, TRUE);
  SendToDriver({"bounds", Text(bounds.left), Text(bounds.top), Text(bounds.right), Text(bounds.bottom)});
  return S_OK;
}

HRESULT __stdcall MoveFocus(Object*, int reason) {
  SetFocus(child);
  SendToDriver({"focus", Text(reason)});
  return S_OK;
}

HRESULT __stdcall GetCoreWebView2(Object*, Object** out) {
  *out = nullptr;
  if (mode == "no-view") return E_FAIL;
  *out = view = new Object(kView, "view");
  // The task bar makes its button some time after the window.
  PostMessageW(GetParent(child), RegisterWindowMessageW(L"TaskbarButtonCreated"), 0, 0);
  return S_OK;
}

const Slots kController =
    Table({At(6, &PutBounds), At(12, &MoveFocus), At(23, &Report<"moved">), At(25, &GetCoreWebView2)});

/// Receives the mouse over its area, and keeps it while a button is down.
LRESULT CALLBACK ChildProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_LBUTTONDOWN) SetCapture(window);
  if (message == WM_LBUTTONUP) ReleaseCapture();
  if (message == WM_LBUTTONDOWN || message == WM_LBUTTONDBLCLK) SendToDriver({"press"});
  if (message == WM_LBUTTONUP) SendToDriver({"release"});
  return DefWindowProcW(window, message, wParam, lParam);
}

/// Reports that the program's window gets an icon, and that the system's own loop that moves or sizes it
/// ends.
LRESULT CALLBACK WatchWindow(int code, WPARAM wParam, LPARAM lParam) {
  const auto& sent = *reinterpret_cast<const CWPSTRUCT*>(lParam);
  if (sent.message == WM_SETICON) SendToDriver({"icon", Text(sent.wParam)});
  if (sent.message == WM_EXITSIZEMOVE) SendToDriver({"loop ends"});
  return CallNextHookEx(nullptr, code, wParam, lParam);
}

HRESULT __stdcall CreateCoreWebView2Controller(Object*, HWND parent, Handler* handler) {
  if (mode == "no-controller") return E_FAIL;
  Keep("controller", handler);
  DestroyWindow(child);
  child = CreateWindowExW(0, L"STATIC", L"", WS_CHILD | WS_VISIBLE, 0, 0, 0, 0, parent, nullptr, nullptr,
                          nullptr);
  SetWindowLongPtrW(child, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&ChildProcedure));
  Later([] { Finish("controller", kController, mode == "null-controller"); });
  return S_OK;
}

std::string Hexadecimal(IStream* stream) {
  std::string out;
  std::uint8_t byte = 0;
  for (ULONG got = 0; SUCCEEDED(stream->Read(&byte, 1, &got)) && got > 0;) out += platform::HexOf(byte);
  return out;
}

HRESULT __stdcall CreateWebResourceResponse(Object*, IStream* content, int status, const wchar_t* reason,
                                            const wchar_t* headers, Object** out) {
  *out = nullptr;
  if (mode == "no-response") return E_FAIL;
  *out = new Object(kResponse, "response");
  (*out)->response = {Text(status), Text(reason), Text(headers), Hexadecimal(content)};
  return S_OK;
}

const Slots kEnvironment = Table({At(3, &CreateCoreWebView2Controller), At(4, &CreateWebResourceResponse)});

void FinishEnvironment() { Finish("environment", kEnvironment, mode == "no-environment"); }

HRESULT __stdcall GetItself(Object* self, REFIID, void** object) {
  *object = self;
  return S_OK;
}

const Slots kTaskbar =
    Table({At(3, &Report<"taskbar ready">), At(9, &Report<"taskbar value", HWND, ULONGLONG, ULONGLONG>),
           At(10, &Report<"taskbar state", HWND, int>)});

HRESULT __stdcall CreateTaskbar(Object*, IUnknown*, REFIID id, void** object) {
  *object = id == IID_ITaskbarList3 ? new Object(kTaskbar, "taskbar") : nullptr;
  return *object != nullptr ? S_OK : E_NOINTERFACE;
}

const Slots kTaskbarFactory = Table({At(0, &GetItself), At(3, &CreateTaskbar)});

/// EVENT TEXT NUMBER RESULT: raises the event with arguments that have this text and number, and whose getter
/// of the text returns RESULT. Answers with "done" or "refused", and the response, if there is one.
void Raise(const Line& line) {
  auto* arguments = new Object(kEvents.at(line[0]).arguments, "arguments");
  arguments->text = platform::Utf8ToWide(line[1]);
  arguments->number = std::stoul(line[2]);
  arguments->textResult = static_cast<HRESULT>(std::stoul(line[3]));
  if (Call(handlers.at(line[0]), 3, view, arguments) != S_OK) Trap();
  Line answer{line[0], arguments->refused ? "refused" : "done"};
  answer.insert(answer.end(), arguments->response.begin(), arguments->response.end());
  Release(arguments);
  SendToDriver(answer);
}

constexpr wchar_t kBackgroundVariable[] = L"WEBVIEW2_DEFAULT_BACKGROUND_COLOR";

/// Answers with the number of objects of each kind, the references of each handler, and whether a program
/// that is started now inherits the colour.
void ReportState() {
  Line report{"report"};
  for (const auto& [kind, count] : live) report.push_back(kind + "=" + Text(count));
  for (const auto& [event, handler] : handlers) {
    Call(handler, 1);
    report.push_back(event + "=" + Text(Call(handler, 2)));
  }
  report.push_back("colour=" + Text(GetEnvironmentVariableW(kBackgroundVariable, nullptr, 0)));
  SendToDriver(report);
}

/// MESSAGE WPARAM [LEFT TOP RIGHT BOTTOM]: sends the program's window a message with a rectangle.
void SendToWindow(const Line& line) {
  LONG rectangle[4] = {};
  for (std::size_t i = 3; i < line.size(); ++i) rectangle[i - 3] = std::stol(line[i]);
  SendMessageW(GetParent(child), std::stoul(line[1]), std::stoul(line[2]),
               reinterpret_cast<LPARAM>(rectangle));
  SendToDriver({line[0]});
}

void Handle(const Line& line) {
  if (line[0] == "report") {
    ReportState();
  } else if (line[0] == "window") {
    SendToWindow(line);
  } else {
    Raise(line);
  }
}

/// Ends the process when the driver ends: a test that is over leaves no window.
void ReadLines() {
  for (std::string text; platform::ReadLine(text);) {
    Line line;
    std::istringstream in(text);
    for (std::string field; std::getline(in, field, kFieldEnd);) line.push_back(field);
    Later([line] { Handle(line); });
  }
  TerminateProcess(GetCurrentProcess(), 98);
}

/// Once, before the first environment.
void Begin() {
  const char* wanted = std::getenv("WEB_VIEW_STAND_IN_MODE");
  mode = wanted != nullptr ? wanted : "";
  platform::UseBinaryStandardStreams();
  queue = new platform::MessageQueue([](const platform::QueueMessage& message) {
    const std::unique_ptr<std::function<void()>> step(
        reinterpret_cast<std::function<void()>*>(message.lParam));
    (*step)();
  });
  SetWindowsHookExW(WH_CALLWNDPROC, &WatchWindow, nullptr, GetCurrentThreadId());
  std::thread(ReadLines).detach();
  DWORD unused = 0;
  CoRegisterClassObject(CLSID_TaskbarList,
                        reinterpret_cast<IUnknown*>(new Object(kTaskbarFactory, "taskbar factory")),
                        CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &unused);
}

}  // namespace
}  // namespace stand_in

extern "C" __declspec(dllexport) HRESULT
    __stdcall CreateCoreWebView2EnvironmentWithOptions(const wchar_t* browser, const wchar_t* data,
                                                       IUnknown* options, stand_in::Handler* handler) {
  using namespace stand_in;
  if (queue == nullptr) Begin();
  wchar_t colour[16] = L"";
  GetEnvironmentVariableW(kBackgroundVariable, colour, 16);
  SendToDriver({"environment", Text(browser), Text(data), options == nullptr ? "no options" : "options",
                Text(colour)});
  if (mode == "no-runtime") return static_cast<HRESULT>(0x80070002);
  Keep("environment", handler);
  if (mode == "at-once") {
    FinishEnvironment();
  } else {
    Later(FinishEnvironment);
  }
  return S_OK;
}

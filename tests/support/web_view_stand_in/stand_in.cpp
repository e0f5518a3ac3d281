// Takes the place of the loader and of its web view. It shows nothing: it reports to its driver what the
// program does, and does to the program what the driver says. The interfaces are tables of functions at the
// slot numbers of their binary form, written without the product's declarations, so that a wrong order or
// parameter there is noticed: a slot that the product has no business in ends the process.
#include <windows.h>

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <thread>

#include <fcntl.h>
#include <io.h>
#include <objbase.h>

#include "objects.h"

namespace stand_in {
namespace {

/// Hands on what comes, and ends the process with its driver: a test that is over leaves no window behind.
void ReadLines(void (*post)(Line* line)) {
  for (std::string text; std::getline(std::cin, text, kLineEnd);) {
    auto* line = new Line;
    std::istringstream in(text + kFieldEnd);
    for (std::string field; std::getline(in, field, kFieldEnd);) line->push_back(field);
    post(line);
  }
  TerminateProcess(GetCurrentProcess(), 98);
}

HRESULT __stdcall GetText(Object* self, wchar_t** text) {
  *text = nullptr;
  if (self->textResult != S_OK) return FAILED(self->textResult) ? self->textResult : S_OK;
  const std::size_t bytes = (self->text.size() + 1) * sizeof(wchar_t);
  *text = static_cast<wchar_t*>(memcpy(CoTaskMemAlloc(bytes), self->text.c_str(), bytes));
  return S_OK;
}

HRESULT __stdcall GetNumber(Object* self, UINT64* number) {
  *number = self->number;
  return S_OK;
}

HRESULT __stdcall GetKind(Object* self, int* kind) {
  *kind = static_cast<int>(self->number);
  return S_OK;
}

HRESULT __stdcall Refuse(Object* self, BOOL refused) {
  self->refused = refused;
  return S_OK;
}

HRESULT __stdcall GetRequest(Object* self, Object** request) {
  AddRef(self->request);
  *request = self->request;
  return S_OK;
}

HRESULT __stdcall PutResponse(Object* self, Object* response) {
  AddRef(response);
  self->response = response;
  return S_OK;
}

const Slots kRequest = Table({At(3, &GetText)});
const Slots kRequestArgs = Table({At(3, &GetRequest), At(5, &PutResponse)});
const Slots kResponse = Table({});
const Slots kMessageArgs = Table({At(5, &GetText)});
const Slots kNavigationArgs = Table({At(3, &GetText), At(8, &Refuse), At(9, &GetNumber)});
const Slots kNewWindowArgs = Table({At(6, &Refuse)});
const Slots kCompletedArgs = Table({At(5, &GetNumber)});
const Slots kFailedArgs = Table({At(3, &GetKind)});

/// An object of the program's, called through its table.
struct Handler {
  void* const* table;
};

template <typename... Arguments>
HRESULT Call(Handler* handler, std::size_t slot, Arguments... arguments) {
  using Function = HRESULT(__stdcall*)(Handler*, Arguments...);
  return reinterpret_cast<Function>(handler->table[slot])(handler, arguments...);
}

/// Whether a handler answers for its own interface and for no other, with its references right.
bool IsSound(Handler* handler, const GUID& id) {
  constexpr GUID kUnknown = {0, 0, 0, {0xc0, 0, 0, 0, 0, 0, 0, 0x46}};
  constexpr GUID kForeign = {0x12345678, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};
  void* object = nullptr;
  for (const GUID& known : {id, kUnknown}) {
    if (Call(handler, 0, &known, &object) != S_OK || object != handler) return false;
    Call(handler, 2);
  }
  if (Call(handler, 0, &kForeign, &object) != E_NOINTERFACE || object != nullptr) return false;
  return Call(handler, 1) == 2 && Call(handler, 2) == 1;
}

/// What the program has handlers for, each with the handler's interface.
struct Event {
  const char* name;
  GUID handler;
};
constexpr Event kEnvironmentMade{
    "environment", {0x4e8a3389, 0xc9d8, 0x4bd2, {0xb6, 0xb5, 0x12, 0x4f, 0xee, 0x6c, 0xc1, 0x4d}}};
constexpr Event kControllerMade{
    "controller", {0x6c4819f3, 0xc9b7, 0x4260, {0x81, 0x27, 0xc9, 0xf5, 0xbd, 0xe7, 0xf6, 0x8c}}};
constexpr Event kNavigationStarting{
    "NavigationStarting", {0x9adbe429, 0xf36d, 0x432b, {0x9d, 0xdc, 0xf8, 0x88, 0x1f, 0xbd, 0x76, 0xe3}}};
constexpr Event kNavigationCompleted{
    "NavigationCompleted", {0xd33a35bf, 0x1c49, 0x4f98, {0x93, 0xab, 0x00, 0x6e, 0x05, 0x33, 0xfe, 0x1c}}};
constexpr Event kWebMessageReceived{
    "WebMessageReceived", {0x57213f19, 0x00e6, 0x49fa, {0x8e, 0x07, 0x89, 0x8e, 0xa0, 0x1e, 0xcb, 0xd2}}};
constexpr Event kNewWindowRequested{
    "NewWindowRequested", {0xd4c185fe, 0xc81c, 0x4989, {0x97, 0xaf, 0x2d, 0x3f, 0xa7, 0xab, 0x56, 0x51}}};
constexpr Event kProcessFailed{
    "ProcessFailed", {0x79e0aea4, 0x990b, 0x42d9, {0xaa, 0x1d, 0x0f, 0xcc, 0x2e, 0x5b, 0xc7, 0xf1}}};
constexpr Event kWebResourceRequested{
    "WebResourceRequested", {0xab00b74c, 0x15f1, 0x4646, {0x80, 0xe8, 0xe7, 0x63, 0x41, 0xd2, 0x5d, 0x71}}};

std::map<std::string, Handler*> handlers;  // by the event's name; owned

void Keep(const Event& event, Handler* handler) {
  SendToDriver({"handler", event.name, IsSound(handler, event.handler) ? "sound" : "unsound"});
  Call(handler, 1);
  handlers[event.name] = handler;
}

template <const Event& event>
HRESULT __stdcall AddHandler(Object*, Handler* handler, INT64*) {
  Keep(event, handler);
  return S_OK;
}

HWND messageWindow = nullptr;
HWND child = nullptr;
Object* view = nullptr;
UINT64 navigation = 0;  // number of the latest one
std::string mode;       // which step fails

constexpr wchar_t kBackgroundVariable[] = L"WEBVIEW2_DEFAULT_BACKGROUND_COLOR";
constexpr wchar_t kClass[] = L"WebViewStandIn";
constexpr wchar_t kChildClass[] = L"WebViewStandInChild";
enum : UINT { kEnvironmentReady = WM_APP, kControllerReady, kLine };

HRESULT __stdcall NavigateToString(Object*, const wchar_t* page) {
  ++navigation;
  SendToDriver({"navigate", Narrow(page)});
  return S_OK;
}

HRESULT __stdcall PostWebMessageAsString(Object*, const wchar_t* text) {
  SendToDriver({"message", Narrow(text)});
  return S_OK;
}

HRESULT __stdcall AddFilter(Object*, const wchar_t* pattern, int context) {
  SendToDriver({"filter", Narrow(pattern), std::to_string(context)});
  return S_OK;
}

const Slots kView = Table({At(6, &NavigateToString), At(7, &AddHandler<kNavigationStarting>),
                           At(15, &AddHandler<kNavigationCompleted>), At(25, &AddHandler<kProcessFailed>),
                           At(33, &PostWebMessageAsString), At(34, &AddHandler<kWebMessageReceived>),
                           At(44, &AddHandler<kNewWindowRequested>),
                           At(55, &AddHandler<kWebResourceRequested>), At(57, &AddFilter)});

HRESULT __stdcall PutBounds(Object*, RECT bounds) {
  const auto text = [](LONG value) { return std::to_string(value); };
  MoveWindow(child, bounds.left, bounds.top, bounds.right - bounds.left, bounds.bottom - bounds.top, TRUE);
  SendToDriver({"bounds", text(bounds.left), text(bounds.top), text(bounds.right), text(bounds.bottom)});
  return S_OK;
}

HRESULT __stdcall MoveFocus(Object*, int reason) {
  SetFocus(child);
  SendToDriver({"focus", std::to_string(reason)});
  return S_OK;
}

HRESULT __stdcall NotifyParentWindowPositionChanged(Object*) {
  SendToDriver({"moved"});
  return S_OK;
}

HRESULT __stdcall GetCoreWebView2(Object*, Object** out) {
  *out = nullptr;
  if (mode == "no-view") return E_FAIL;
  *out = view = new Object(kView, "view");
  AddRef(view);
  return S_OK;
}

const Slots kController = Table({At(6, &PutBounds), At(12, &MoveFocus),
                                 At(23, &NotifyParentWindowPositionChanged), At(25, &GetCoreWebView2)});

/// The web view's window: it takes the mouse over its place, and keeps it while a button is down.
LRESULT CALLBACK ChildProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_LBUTTONDOWN:
      SetCapture(window);
      SendToDriver({"press", std::to_string(LOWORD(lParam)), std::to_string(HIWORD(lParam))});
      return 0;
    case WM_LBUTTONUP:
      ReleaseCapture();
      SendToDriver({"release"});
      return 0;
    case WM_KEYDOWN:
      SendToDriver({"key", std::to_string(wParam)});
      return 0;
    default:
      return DefWindowProcW(window, message, wParam, lParam);
  }
}

/// Reports when the system begins and ends to move or size the program's window, and that it has got an icon.
LRESULT CALLBACK WatchWindow(int code, WPARAM wParam, LPARAM lParam) {
  const auto& sent = *reinterpret_cast<const CWPSTRUCT*>(lParam);
  if (sent.message == WM_ENTERSIZEMOVE) SendToDriver({"loop", "begins"});
  if (sent.message == WM_EXITSIZEMOVE) SendToDriver({"loop", "ends"});
  if (sent.message == WM_SETICON) SendToDriver({"icon", std::to_string(sent.wParam)});
  return CallNextHookEx(nullptr, code, wParam, lParam);
}

HRESULT __stdcall CreateCoreWebView2Controller(Object*, HWND parent, Handler* handler) {
  if (mode == "no-controller") return E_FAIL;
  Keep(kControllerMade, handler);
  child = CreateWindowExW(0, kChildClass, L"", WS_CHILD | WS_VISIBLE, 0, 0, 0, 0, parent, nullptr, nullptr,
                          nullptr);
  PostMessageW(messageWindow, kControllerReady, 0, 0);
  return S_OK;
}

HRESULT __stdcall CreateWebResourceResponse(Object*, IStream* content, int status, const wchar_t* reason,
                                            const wchar_t* headers, Object** out) {
  *out = nullptr;
  if (mode == "no-response") return E_FAIL;
  *out = new Object(kResponse, "response");
  content->AddRef();
  (*out)->content = content;
  (*out)->head = {std::to_string(status), Narrow(reason), Narrow(headers)};
  return S_OK;
}

const Slots kEnvironment = Table({At(3, &CreateCoreWebView2Controller), At(4, &CreateWebResourceResponse)});

/// Hands over what the program has asked to be made, or nothing if this is the step that fails.
void Finish(const Event& made, const Slots& table, bool fails) {
  Object* object = fails ? nullptr : new Object(table, made.name);
  Call(handlers[made.name], 3, fails ? E_FAIL : S_OK, object);
  if (object != nullptr) Release(object);
  Call(handlers[made.name], 2);
  handlers.erase(made.name);
}

void FinishEnvironment() { Finish(kEnvironmentMade, kEnvironment, mode == "no-environment"); }

std::string Hexadecimal(IStream* stream) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string out;
  unsigned char buffer[4096];
  ULONG got = 0;
  while (SUCCEEDED(stream->Read(buffer, sizeof buffer, &got)) && got > 0) {
    for (ULONG i = 0; i < got; ++i) (out += kDigits[buffer[i] >> 4]) += kDigits[buffer[i] & 15];
  }
  return out;
}

/// What the driver lets happen: the event, its arguments, and what the getter of their text answers.
struct Happening {
  const Event& event;
  const Slots& arguments;
  HRESULT textResult = S_OK;
};
const std::map<std::string, Happening> kHappenings = {
    {"send", {kWebMessageReceived, kMessageArgs}},
    {"send-other", {kWebMessageReceived, kMessageArgs, E_INVALIDARG}},  // not a string
    {"send-null", {kWebMessageReceived, kMessageArgs, S_FALSE}},
    {"get", {kWebResourceRequested, kRequestArgs}},
    {"go", {kNavigationStarting, kNavigationArgs}},
    {"open", {kNewWindowRequested, kNewWindowArgs}},
    {"complete", {kNavigationCompleted, kCompletedArgs}},
    {"fail", {kProcessFailed, kFailedArgs}},
};

/// A navigation that was refused completes, too.
void CompleteRefused() {
  auto* arguments = new Object(kCompletedArgs, "arguments");
  arguments->number = navigation;
  Call(handlers["NavigationCompleted"], 3, view, arguments);
  Release(arguments);
}

/// What goes with the browser's process: its window, and whatever it called.
void CloseView() {
  DestroyWindow(child);
  Release(view);
  for (const auto& [name, handler] : handlers) Call(handler, 2);
  handlers.clear();
}

/// VERB [TEXT]: answers with the verb, "done", "refused" or "failed", and the response that came, if any.
void LetHappen(const Line& line) {
  const Happening& happening = kHappenings.at(line[0]);
  auto* arguments = new Object(happening.arguments, "arguments");
  arguments->request = new Object(kRequest, "request");
  arguments->text = arguments->request->text = line.size() > 1 ? Wide(line[1]) : L"";
  arguments->textResult = happening.textResult;
  if (line[0] == "go") ++navigation;
  arguments->number = line[0] == "fail" ? std::stoul(line[1]) : navigation;
  const HRESULT result = Call(handlers[happening.event.name], 3, view, arguments);
  if (line[0] == "go" && arguments->refused) CompleteRefused();
  if (line[0] == "fail" && arguments->number == 0) CloseView();
  Line answer{line[0], result != S_OK ? "failed" : arguments->refused ? "refused" : "done"};
  if (const Object* response = arguments->response) {
    answer.insert(answer.end(), response->head.begin(), response->head.end());
    answer.push_back(Hexadecimal(response->content));
  }
  Release(arguments);
  SendToDriver(answer);
}

/// What is alive, how many references each handler has, and whether a started program would inherit a colour.
void Report() {
  Line report{"report"};
  for (const auto& [kind, count] : live) report.push_back(kind + "=" + std::to_string(count));
  for (const auto& [name, handler] : handlers) {
    Call(handler, 1);
    report.push_back(name + "=" + std::to_string(Call(handler, 2)));
  }
  wchar_t colour[2];
  const DWORD length = GetEnvironmentVariableW(kBackgroundVariable, colour, 2);
  report.push_back("colour=" + std::to_string(length));
  SendToDriver(report);
}

/// MESSAGE WPARAM [NUMBER...]: sends the program's window a message whose lParam points to ten numbers, and
/// answers with its result and the ten. MESSAGE is a number, or the name that it is registered under.
void SendToWindow(const Line& line) {
  LONG numbers[10] = {};
  for (std::size_t i = 3; i < line.size(); ++i) numbers[i - 3] = std::stol(line[i]);
  const UINT named = RegisterWindowMessageW(Wide(line[1]).c_str());
  const UINT message = std::isdigit(line[1][0]) != 0 ? std::stoul(line[1]) : named;
  const LRESULT result =
      SendMessageW(GetParent(child), message, std::stoul(line[2]), reinterpret_cast<LPARAM>(numbers));
  Line answer{line[0], std::to_string(result)};
  for (const LONG number : numbers) answer.push_back(std::to_string(number));
  SendToDriver(answer);
}

LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case kEnvironmentReady:
      FinishEnvironment();
      return 0;
    case kControllerReady:
      Finish(kControllerMade, kController, mode == "null-controller");
      return 0;
    case kLine: {
      const Line* line = reinterpret_cast<Line*>(lParam);
      if (line->front() == "report") {
        Report();
      } else if (line->front() == "window") {
        SendToWindow(*line);
      } else {
        LetHappen(*line);
      }
      delete line;
      return 0;
    }
    default:
      return DefWindowProcW(window, message, wParam, lParam);
  }
}

void PostLine(Line* line) {
  // A queue that is full has room again soon.
  while (!PostMessageW(messageWindow, kLine, 0, reinterpret_cast<LPARAM>(line))) Sleep(1);
}

/// Once, before the first environment.
void Begin() {
  const char* wanted = std::getenv("WEB_VIEW_STAND_IN_MODE");
  mode = wanted != nullptr ? wanted : "";
  for (FILE* stream : {stdin, stdout}) _setmode(_fileno(stream), _O_BINARY);
  WNDCLASSW windowClass{};
  windowClass.lpfnWndProc = &Procedure;
  windowClass.lpszClassName = kClass;
  RegisterClassW(&windowClass);
  windowClass.lpfnWndProc = &ChildProcedure;
  windowClass.lpszClassName = kChildClass;
  RegisterClassW(&windowClass);
  messageWindow = CreateWindowExW(0, kClass, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
  SetWindowsHookExW(WH_CALLWNDPROC, &WatchWindow, nullptr, GetCurrentThreadId());
  std::thread(ReadLines, &PostLine).detach();
  ReplaceTaskbar();
}

}  // namespace
}  // namespace stand_in

extern "C" HRESULT __stdcall CreateCoreWebView2EnvironmentWithOptions(const wchar_t* browser,
                                                                      const wchar_t* data, IUnknown* options,
                                                                      stand_in::Handler* handler) {
  using namespace stand_in;
  if (messageWindow == nullptr) Begin();
  wchar_t colour[16] = L"";
  GetEnvironmentVariableW(kBackgroundVariable, colour, 16);
  SendToDriver({"environment", Narrow(browser), Narrow(data), options == nullptr ? "no options" : "options",
                Narrow(colour)});
  if (mode == "no-runtime") return static_cast<HRESULT>(0x80070002);
  Keep(kEnvironmentMade, handler);
  if (mode == "at-once") {
    FinishEnvironment();
  } else {
    PostMessageW(messageWindow, kEnvironmentReady, 0, 0);
  }
  return S_OK;
}

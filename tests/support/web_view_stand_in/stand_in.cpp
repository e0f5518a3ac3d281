// Stands in for the loader and the web view behind it. It shows nothing: it tells its driver what the program
// does, and does to the program what the driver says. The interfaces are tables of functions at the slot
// numbers of their binary form, written without the product's declarations, so that a wrong order or
// parameter there is noticed: a slot that the product has no business in ends the process.
#include <windows.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <io.h>
#include <objbase.h>

#include "platform/text.h"

namespace {

/// What passes between the stand-in and its driver over standard input and output: a list of fields in UTF-8,
/// with the control character 1F between them and 1E at its end, which stand in no field.
using Line = std::vector<std::string>;
constexpr char kFieldEnd = '\x1f';
constexpr char kLineEnd = '\x1e';

/// Main thread only.
void TellDriver(const Line& line) {
  std::string text = line.front();
  for (std::size_t i = 1; i < line.size(); ++i) text += kFieldEnd + line[i];
  std::cout << text << kLineEnd << std::flush;
}

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

std::string Narrow(const wchar_t* text) {
  return text != nullptr ? platform::WideToUtf8(reinterpret_cast<const char16_t*>(text)) : "(null)";
}

std::wstring Wide(const std::string& text) {
  const std::u16string wide = platform::Utf8ToWide(text);
  return {wide.begin(), wide.end()};
}

using Slots = std::array<void*, 61>;  // as many as the longest interface has

std::map<std::string, int> live;  // objects of a kind that the program or the stand-in still holds

struct Object {
  void* const* table;
  const char* kind;
  ULONG references = 1;
  std::wstring text;           // address or message, by kind
  HRESULT textResult = S_OK;   // what the getter of `text` answers
  Object* request = nullptr;   // owned: of the arguments of a request
  Object* response = nullptr;  // owned: as put by the program
  IStream* content = nullptr;  // owned: of a response
  Line head;                   // status, reason and headers of a response
  BOOL refused = FALSE;        // a navigation cancelled, a new window taken over

  Object(const Slots& functions, const char* name) : table(functions.data()), kind(name) { ++live[kind]; }
  Object(const Object&) = delete;
};

HRESULT __stdcall QueryInterface(Object*, REFIID, void** object) {
  *object = nullptr;
  return E_NOINTERFACE;
}

ULONG __stdcall AddRef(Object* self) { return ++self->references; }

ULONG __stdcall Release(Object* self) {
  if (--self->references > 0) return self->references;
  if (self->request != nullptr) Release(self->request);
  if (self->response != nullptr) Release(self->response);
  if (self->content != nullptr) self->content->Release();
  --live[self->kind];
  delete self;
  return 0;
}

template <std::size_t Slot>
void __stdcall Trap() {
  TellDriver({"trap", std::to_string(Slot)});
  TerminateProcess(GetCurrentProcess(), 99);
}

template <std::size_t... Slot>
Slots Traps(std::index_sequence<Slot...>) {
  return {reinterpret_cast<void*>(&QueryInterface), reinterpret_cast<void*>(&AddRef),
          reinterpret_cast<void*>(&Release), reinterpret_cast<void*>(&Trap<Slot + 3>)...};
}

template <typename Function>
std::pair<std::size_t, void*> At(std::size_t slot, Function function) {
  return {slot, reinterpret_cast<void*>(function)};
}

Slots Table(std::initializer_list<std::pair<std::size_t, void*>> functions) {
  Slots slots = Traps(std::make_index_sequence<58>());
  for (const auto& [slot, function] : functions) slots[slot] = function;
  return slots;
}

HRESULT __stdcall GetText(Object* self, wchar_t** text) {
  *text = nullptr;
  if (self->textResult != S_OK) return FAILED(self->textResult) ? self->textResult : S_OK;
  const std::size_t bytes = (self->text.size() + 1) * sizeof(wchar_t);
  *text = static_cast<wchar_t*>(memcpy(CoTaskMemAlloc(bytes), self->text.c_str(), bytes));
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
const Slots kNavigationArgs = Table({At(3, &GetText), At(8, &Refuse)});
const Slots kNewWindowArgs = Table({At(6, &Refuse)});
const Slots kCompletedArgs = Table({});

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
constexpr Event kWebResourceRequested{
    "WebResourceRequested", {0xab00b74c, 0x15f1, 0x4646, {0x80, 0xe8, 0xe7, 0x63, 0x41, 0xd2, 0x5d, 0x71}}};

std::map<std::string, Handler*> handlers;  // by the event's name; owned

void Keep(const Event& event, Handler* handler) {
  TellDriver({"handler", event.name, IsSound(handler, event.handler) ? "sound" : "unsound"});
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
std::string mode;  // which step fails

enum : UINT { kEnvironmentReady = WM_APP, kControllerReady, kLine };

HRESULT __stdcall NavigateToString(Object*, const wchar_t* page) {
  TellDriver({"navigate", Narrow(page)});
  return S_OK;
}

HRESULT __stdcall PostWebMessageAsString(Object*, const wchar_t* text) {
  TellDriver({"message", Narrow(text)});
  return S_OK;
}

HRESULT __stdcall AddFilter(Object*, const wchar_t* pattern, int context) {
  TellDriver({"filter", Narrow(pattern), std::to_string(context)});
  return S_OK;
}

const Slots kView = Table({At(6, &NavigateToString), At(7, &AddHandler<kNavigationStarting>),
                           At(15, &AddHandler<kNavigationCompleted>), At(33, &PostWebMessageAsString),
                           At(34, &AddHandler<kWebMessageReceived>), At(44, &AddHandler<kNewWindowRequested>),
                           At(55, &AddHandler<kWebResourceRequested>), At(57, &AddFilter)});

HRESULT __stdcall PutBounds(Object*, RECT bounds) {
  const auto text = [](LONG value) { return std::to_string(value); };
  MoveWindow(child, bounds.left, bounds.top, bounds.right - bounds.left, bounds.bottom - bounds.top, TRUE);
  TellDriver({"bounds", text(bounds.left), text(bounds.top), text(bounds.right), text(bounds.bottom)});
  return S_OK;
}

HRESULT __stdcall GetCoreWebView2(Object*, Object** out) {
  *out = nullptr;
  if (mode == "no-view") return E_FAIL;
  *out = view = new Object(kView, "view");
  AddRef(view);
  return S_OK;
}

const Slots kController = Table({At(6, &PutBounds), At(25, &GetCoreWebView2)});

HRESULT __stdcall CreateCoreWebView2Controller(Object*, HWND parent, Handler* handler) {
  if (mode == "no-controller") return E_FAIL;
  Keep(kControllerMade, handler);
  // As the web view's window does, it takes the mouse where it stands.
  child = CreateWindowExW(0, L"STATIC", L"", WS_CHILD | WS_VISIBLE | SS_NOTIFY, 0, 0, 0, 0, parent, nullptr,
                          nullptr, nullptr);
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
};

/// VERB [TEXT]: answers with the verb, "done", "refused" or "failed", and the response that came, if any.
void LetHappen(const Line& line) {
  const Happening& happening = kHappenings.at(line[0]);
  auto* arguments = new Object(happening.arguments, "arguments");
  arguments->request = new Object(kRequest, "request");
  arguments->text = arguments->request->text = line.size() > 1 ? Wide(line[1]) : L"";
  arguments->textResult = happening.textResult;
  const HRESULT result = Call(handlers[happening.event.name], 3, view, arguments);
  Line answer{line[0], result != S_OK ? "failed" : arguments->refused ? "refused" : "done"};
  if (const Object* response = arguments->response) {
    answer.insert(answer.end(), response->head.begin(), response->head.end());
    answer.push_back(Hexadecimal(response->content));
  }
  Release(arguments);
  TellDriver(answer);
}

/// What is alive, and how many references each handler has.
void Report() {
  Line report{"report"};
  for (const auto& [kind, count] : live) report.push_back(kind + "=" + std::to_string(count));
  for (const auto& [name, handler] : handlers) {
    Call(handler, 1);
    report.push_back(name + "=" + std::to_string(Call(handler, 2)));
  }
  TellDriver(report);
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
      line->front() == "report" ? Report() : LetHappen(*line);
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

}  // namespace

extern "C" HRESULT __stdcall CreateCoreWebView2EnvironmentWithOptions(const wchar_t* browser,
                                                                      const wchar_t* data, IUnknown* options,
                                                                      Handler* handler) {
  const char* wanted = std::getenv("WEB_VIEW_STAND_IN_MODE");
  mode = wanted != nullptr ? wanted : "";
  for (FILE* stream : {stdin, stdout}) _setmode(_fileno(stream), _O_BINARY);
  WNDCLASSW windowClass{};
  windowClass.lpfnWndProc = &Procedure;
  windowClass.lpszClassName = L"WebViewStandIn";
  RegisterClassW(&windowClass);
  messageWindow = CreateWindowExW(0, windowClass.lpszClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                  nullptr, nullptr);
  std::thread(ReadLines, &PostLine).detach();
  TellDriver({"environment", Narrow(browser), Narrow(data), options == nullptr ? "no options" : "options"});
  if (mode == "no-runtime") return static_cast<HRESULT>(0x80070002);
  Keep(kEnvironmentMade, handler);
  if (mode == "at-once") {
    FinishEnvironment();
  } else {
    PostMessageW(messageWindow, kEnvironmentReady, 0, 0);
  }
  return S_OK;
}

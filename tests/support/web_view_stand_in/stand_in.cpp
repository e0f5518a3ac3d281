// Stands in for the loader and the web view behind it. It shows nothing: it tells its driver what the program
// does, and does to the program what the driver says. The interfaces are tables of functions at the slot
// numbers of their binary form, written without the product's declarations, so that a wrong order or
// parameter there is noticed: a slot that the product has no business in ends the process.
#include <windows.h>

#include <array>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>

#include <objbase.h>

#include "driver_connection.h"

namespace {

constexpr HRESULT kNoRuntime = static_cast<HRESULT>(0x80070002);

// ---- Objects
// -------------------------------------------------------------------------------------------------------

std::map<std::string, int> live;  // objects of a kind that the program or the stand-in still holds

struct Object {
  void* const* table;
  const char* kind;
  ULONG references = 1;
  std::wstring text;           // address or message, by kind
  HRESULT textResult = S_OK;   // what the getter of `text` answers
  Object* other = nullptr;     // owned: the request of a request's arguments
  Object* response = nullptr;  // owned: as put by the program
  IStream* content = nullptr;  // owned: of a response
  BOOL flag = FALSE;           // cancelled, handled
  int status = 0;
  std::wstring reason, headers;

  Object(void* const* functions, const char* name) : table(functions), kind(name) { ++live[kind]; }
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
};

HRESULT __stdcall QueryInterface(Object*, REFIID, void** object) {
  *object = nullptr;
  return E_NOINTERFACE;
}

ULONG __stdcall AddRef(Object* self) { return ++self->references; }

ULONG __stdcall Release(Object* self) {
  if (--self->references > 0) return self->references;
  if (self->other != nullptr) Release(self->other);
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

template <std::size_t Slots>
class Table {
 public:
  template <typename... Function>
  explicit Table(std::pair<std::size_t, Function>... functions) : Table(std::make_index_sequence<Slots>()) {
    slots_[0] = reinterpret_cast<void*>(&QueryInterface);
    slots_[1] = reinterpret_cast<void*>(&AddRef);
    slots_[2] = reinterpret_cast<void*>(&Release);
    ((slots_[functions.first] = reinterpret_cast<void*>(functions.second)), ...);
  }
  void* const* Get() const { return slots_.data(); }

 private:
  template <std::size_t... Slot>
  explicit Table(std::index_sequence<Slot...>) : slots_{reinterpret_cast<void*>(&Trap<Slot>)...} {}
  std::array<void*, Slots> slots_;
};

template <typename Function>
std::pair<std::size_t, Function> At(std::size_t slot, Function function) {
  return {slot, function};
}

wchar_t* TaskCopy(const std::wstring& text) {
  const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
  return static_cast<wchar_t*>(memcpy(CoTaskMemAlloc(bytes), text.c_str(), bytes));
}

HRESULT __stdcall GetText(Object* self, wchar_t** text) {
  *text = self->textResult == S_OK ? TaskCopy(self->text) : nullptr;
  return FAILED(self->textResult) ? self->textResult : S_OK;
}

HRESULT __stdcall PutFlag(Object* self, BOOL flag) {
  self->flag = flag;
  return S_OK;
}

HRESULT __stdcall GetRequest(Object* self, Object** request) {
  AddRef(self->other);
  *request = self->other;
  return S_OK;
}

HRESULT __stdcall PutResponse(Object* self, Object* response) {
  AddRef(response);
  self->response = response;
  return S_OK;
}

const Table<10> kRequest(At(3, &GetText));
const Table<8> kRequestArgs(At(3, &GetRequest), At(5, &PutResponse));
const Table<10> kResponse;
const Table<6> kMessageArgs(At(5, &GetText));
const Table<10> kNavigationArgs(At(3, &GetText), At(8, &PutFlag));
const Table<11> kNewWindowArgs(At(6, &PutFlag));
const Table<6> kCompletedArgs;

// ---- The program's handlers
// ----------------------------------------------------------------------------------------

struct Handler {
  void* const* table;
};

template <typename... Arguments>
HRESULT Call(Handler* handler, std::size_t slot, Arguments... arguments) {
  return reinterpret_cast<HRESULT(__stdcall*)(Handler*, Arguments...)>(handler->table[slot])(handler,
                                                                                             arguments...);
}

constexpr GUID kUnknown = {0, 0, 0, {0xc0, 0, 0, 0, 0, 0, 0, 0x46}};

/// Whether a handler answers for its own interface and for no other, with its references right.
bool IsSound(Handler* handler, const GUID& id) {
  void* object = nullptr;
  for (const GUID& known : {id, kUnknown}) {
    if (Call(handler, 0, &known, &object) != S_OK || object != handler) return false;
    Call(handler, 2);
  }
  const GUID foreign = {0x12345678, 0, 0, {0, 0, 0, 0, 0, 0, 0, 0}};
  if (Call(handler, 0, &foreign, &object) != E_NOINTERFACE || object != nullptr) return false;
  return Call(handler, 1) == 2 && Call(handler, 2) == 1;
}

std::map<std::string, Handler*> handlers;

HRESULT Keep(const char* name, Handler* handler, const GUID& id) {
  TellDriver({"handler", name, IsSound(handler, id) ? "sound" : "unsound"});
  Call(handler, 1);
  handlers[name] = handler;
  return S_OK;
}

void Drop(const char* name) {
  Call(handlers[name], 2);
  handlers.erase(name);
}

// ---- The web view
// --------------------------------------------------------------------------------------------------

HWND messageWindow = nullptr;
HWND child = nullptr;
Object* view = nullptr;
std::string mode;  // which step fails

constexpr UINT kEnvironmentReady = WM_APP;
constexpr UINT kControllerReady = WM_APP + 1;
constexpr UINT kLine = WM_APP + 2;

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

HRESULT __stdcall AddNavigationStarting(Object*, Handler* handler, INT64*) {
  return Keep("NavigationStarting", handler,
              {0x9adbe429, 0xf36d, 0x432b, {0x9d, 0xdc, 0xf8, 0x88, 0x1f, 0xbd, 0x76, 0xe3}});
}

HRESULT __stdcall AddNavigationCompleted(Object*, Handler* handler, INT64*) {
  return Keep("NavigationCompleted", handler,
              {0xd33a35bf, 0x1c49, 0x4f98, {0x93, 0xab, 0x00, 0x6e, 0x05, 0x33, 0xfe, 0x1c}});
}

HRESULT __stdcall AddWebMessageReceived(Object*, Handler* handler, INT64*) {
  return Keep("WebMessageReceived", handler,
              {0x57213f19, 0x00e6, 0x49fa, {0x8e, 0x07, 0x89, 0x8e, 0xa0, 0x1e, 0xcb, 0xd2}});
}

HRESULT __stdcall AddNewWindowRequested(Object*, Handler* handler, INT64*) {
  return Keep("NewWindowRequested", handler,
              {0xd4c185fe, 0xc81c, 0x4989, {0x97, 0xaf, 0x2d, 0x3f, 0xa7, 0xab, 0x56, 0x51}});
}

HRESULT __stdcall AddWebResourceRequested(Object*, Handler* handler, INT64*) {
  return Keep("WebResourceRequested", handler,
              {0xab00b74c, 0x15f1, 0x4646, {0x80, 0xe8, 0xe7, 0x63, 0x41, 0xd2, 0x5d, 0x71}});
}

const Table<61> kView(At(6, &NavigateToString), At(7, &AddNavigationStarting),
                      At(15, &AddNavigationCompleted), At(33, &PostWebMessageAsString),
                      At(34, &AddWebMessageReceived), At(44, &AddNewWindowRequested),
                      At(55, &AddWebResourceRequested), At(57, &AddFilter));

HRESULT __stdcall PutBounds(Object*, RECT bounds) {
  const auto text = [](LONG value) { return std::to_string(value); };
  MoveWindow(child, bounds.left, bounds.top, bounds.right - bounds.left, bounds.bottom - bounds.top, TRUE);
  TellDriver({"bounds", text(bounds.left), text(bounds.top), text(bounds.right), text(bounds.bottom)});
  return S_OK;
}

HRESULT __stdcall GetCoreWebView2(Object*, Object** out) {
  *out = nullptr;
  if (mode == "no-view") return E_FAIL;
  view = new Object(kView.Get(), "view");
  AddRef(view);
  *out = view;
  return S_OK;
}

const Table<26> kController(At(6, &PutBounds), At(25, &GetCoreWebView2));

HRESULT __stdcall CreateCoreWebView2Controller(Object*, HWND parent, Handler* handler) {
  if (mode == "no-controller") return E_FAIL;
  Keep("controller", handler, {0x6c4819f3, 0xc9b7, 0x4260, {0x81, 0x27, 0xc9, 0xf5, 0xbd, 0xe7, 0xf6, 0x8c}});
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
  *out = new Object(kResponse.Get(), "response");
  content->AddRef();
  (*out)->content = content;
  (*out)->status = status;
  (*out)->reason = reason;
  (*out)->headers = headers;
  return S_OK;
}

const Table<8> kEnvironment(At(3, &CreateCoreWebView2Controller), At(4, &CreateWebResourceResponse));

// ---- What the driver asks for
// --------------------------------------------------------------------------------------

void Raise(const char* name, Object* args) {
  if (Call(handlers[name], 3, view, args) != S_OK) TellDriver({"failed", name});
}

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

/// send TEXT; send-other (not a string); send-null. Answers "handled" when the program has dealt with it.
void Send(const Line& line) {
  Object* args = new Object(kMessageArgs.Get(), "message arguments");
  if (line.size() > 1) args->text = Wide(line[1]);
  if (line[0] == "send-other") args->textResult = E_INVALIDARG;
  if (line[0] == "send-null") args->textResult = S_FALSE;
  Raise("WebMessageReceived", args);
  Release(args);
  TellDriver({"handled"});
}

/// get ADDRESS: a request of the page; answers "asset" with status, reason, headers and content, or nothing.
void Get(const Line& line) {
  Object* args = new Object(kRequestArgs.Get(), "request arguments");
  args->other = new Object(kRequest.Get(), "request");
  args->other->text = Wide(line[1]);
  Raise("WebResourceRequested", args);
  if (const Object* response = args->response) {
    TellDriver({"asset", line[1], std::to_string(response->status), Narrow(response->reason.c_str()),
                Narrow(response->headers.c_str()), Hexadecimal(response->content)});
  } else {
    TellDriver({"asset", line[1]});
  }
  Release(args);
}

/// complete: the navigation has ended.
void Complete(const Line&) {
  Object* args = new Object(kCompletedArgs.Get(), "completed arguments");
  Raise("NavigationCompleted", args);
  Release(args);
}

/// go ADDRESS: something wants to load another document; open ADDRESS: to open another window.
void GoOrOpen(const Line& line) {
  const bool go = line[0] == "go";
  Object* args = new Object(go ? kNavigationArgs.Get() : kNewWindowArgs.Get(), "navigation arguments");
  args->text = Wide(line[1]);
  Raise(go ? "NavigationStarting" : "NewWindowRequested", args);
  TellDriver({line[0], line[1], args->flag ? "refused" : "let go"});
  Release(args);
}

/// report: what is alive, and how many references each handler has.
void Report(const Line&) {
  Line report{"report"};
  for (const auto& [kind, count] : live) report.push_back(kind + "=" + std::to_string(count));
  for (const auto& [name, handler] : handlers) {
    Call(handler, 1);
    report.push_back(name + "=" + std::to_string(Call(handler, 2)));
  }
  TellDriver(report);
}

const std::map<std::string, void (*)(const Line&)> kCommands = {
    {"send", &Send},   {"send-other", &Send}, {"send-null", &Send},    {"get", &Get},
    {"go", &GoOrOpen}, {"open", &GoOrOpen},   {"complete", &Complete}, {"report", &Report},
};

void FinishEnvironment() {
  Object* environment = mode == "no-environment" ? nullptr : new Object(kEnvironment.Get(), "environment");
  Call(handlers["environment"], 3, environment != nullptr ? S_OK : E_FAIL, environment);
  if (environment != nullptr) Release(environment);
  Drop("environment");
}

void FinishController() {
  Object* controller = mode == "null-controller" ? nullptr : new Object(kController.Get(), "controller");
  Call(handlers["controller"], 3, controller != nullptr ? S_OK : E_FAIL, controller);
  if (controller != nullptr) Release(controller);
  Drop("controller");
}

LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case kEnvironmentReady:
      FinishEnvironment();
      return 0;
    case kControllerReady:
      FinishController();
      return 0;
    case kLine: {
      const Line* line = reinterpret_cast<Line*>(lParam);
      const auto command = kCommands.find(line->front());
      if (command != kCommands.end()) command->second(*line);
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

std::string EnvironmentVariable(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

}  // namespace

extern "C" HRESULT __stdcall CreateCoreWebView2EnvironmentWithOptions(const wchar_t* browser,
                                                                      const wchar_t* data, IUnknown* options,
                                                                      Handler* handler) {
  mode = EnvironmentVariable("WEB_VIEW_STAND_IN_MODE");
  WNDCLASSW windowClass{};
  windowClass.lpfnWndProc = &Procedure;
  windowClass.lpszClassName = L"WebViewStandIn";
  RegisterClassW(&windowClass);
  messageWindow = CreateWindowExW(0, windowClass.lpszClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                  nullptr, nullptr);
  if (!ConnectToDriver(&PostLine)) return kNoRuntime;
  TellDriver({"environment", Narrow(browser), Narrow(data), options == nullptr ? "no options" : "options"});
  if (mode == "no-runtime") return kNoRuntime;
  Keep("environment", handler,
       {0x4e8a3389, 0xc9d8, 0x4bd2, {0xb6, 0xb5, 0x12, 0x4f, 0xee, 0x6c, 0xc1, 0x4d}});
  if (mode == "at-once") {
    FinishEnvironment();
  } else {
    PostMessageW(messageWindow, kEnvironmentReady, 0, 0);
  }
  return S_OK;
}

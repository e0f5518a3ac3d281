#pragma once

#include <windows.h>

#include <algorithm>
#include <array>
#include <concepts>
#include <initializer_list>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "platform/standard_streams.h"
#include "platform/text.h"

namespace stand_in {

/// The lines between the stand-in and its driver, on standard input and output: fields in UTF-8.
/// The control character 1F ends each field, and 1E takes the place of a line feed in a field.
using Line = std::vector<std::string>;
constexpr char kFieldEnd = '\x1f';
constexpr char kLineFeed = '\x1e';

/// Main thread only.
inline void SendToDriver(const Line& line) {
  std::string text;
  for (const std::string& field : line) text += field + kFieldEnd;
  std::replace(text.begin(), text.end(), '\n', kLineFeed);
  platform::WriteLine(text);
}

inline std::string Text(const wchar_t* text) {
  return text != nullptr ? platform::WideToUtf8(reinterpret_cast<const char16_t*>(text)) : "(null)";
}

inline std::string Text(HWND window) { return IsWindow(window) ? "window" : "no window"; }

inline std::string Text(std::integral auto number) { return std::to_string(number); }

using Slots = std::array<void*, 61>;  // as many as the longest interface has

inline std::map<std::string, int> live;  // number of objects that exist, by kind

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

inline ULONG __stdcall AddRef(Object* self) { return ++self->references; }

inline ULONG __stdcall Release(Object* self) {
  if (--self->references > 0) return self->references;
  --live[self->kind];
  delete self;
  return 0;
}

/// Takes the place of every method that the program has no reason to call, and ends the process.
inline void __stdcall Trap() {
  SendToDriver({"trap"});
  TerminateProcess(GetCurrentProcess(), 99);
}

template <typename Function>
std::pair<std::size_t, void*> At(std::size_t slot, Function function) {
  return {slot, reinterpret_cast<void*>(function)};
}

/// The table of an interface.
inline Slots Table(std::initializer_list<std::pair<std::size_t, void*>> methods) {
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

}  // namespace stand_in

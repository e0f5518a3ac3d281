#pragma once

#include <windows.h>

#include <array>
#include <initializer_list>
#include <iostream>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <objidl.h>

#include "platform/text.h"

namespace stand_in {

/// What passes between the stand-in and its driver over standard input and output: a list of fields in UTF-8,
/// with the control character 1F between them and 1E at its end, which are in no field.
using Line = std::vector<std::string>;
constexpr char kFieldEnd = '\x1f';
constexpr char kLineEnd = '\x1e';

/// Main thread only.
inline void SendToDriver(const Line& line) {
  std::string text = line.front();
  for (std::size_t i = 1; i < line.size(); ++i) text += kFieldEnd + line[i];
  std::cout << text << kLineEnd << std::flush;
}

inline std::string Narrow(const wchar_t* text) {
  return text != nullptr ? platform::WideToUtf8(reinterpret_cast<const char16_t*>(text)) : "(null)";
}

inline std::wstring Wide(const std::string& text) {
  const std::u16string wide = platform::Utf8ToWide(text);
  return {wide.begin(), wide.end()};
}

using Slots = std::array<void*, 61>;  // as many as the longest interface has

inline std::map<std::string, int> live;  // objects of a kind that the program or the stand-in still holds

struct Object {
  void* const* table;
  const char* kind;
  ULONG references = 1;
  std::wstring text;           // address or message, by kind
  HRESULT textResult = S_OK;   // what the getter of `text` answers
  UINT64 number = 0;           // of a navigation, or the kind of a process that failed
  Object* request = nullptr;   // owned: of the arguments of a request
  Object* response = nullptr;  // owned: as put by the program
  IStream* content = nullptr;  // owned: of a response
  Line head;                   // status, reason and headers of a response
  BOOL refused = FALSE;        // a navigation cancelled, a new window taken over

  Object(const Slots& functions, const char* name) : table(functions.data()), kind(name) { ++live[kind]; }
  Object(const Object&) = delete;
};

inline HRESULT __stdcall QueryInterface(Object*, REFIID, void** object) {
  *object = nullptr;
  return E_NOINTERFACE;
}

inline ULONG __stdcall AddRef(Object* self) { return ++self->references; }

inline ULONG __stdcall Release(Object* self) {
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
  SendToDriver({"trap", std::to_string(Slot)});
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

inline Slots Table(std::initializer_list<std::pair<std::size_t, void*>> functions) {
  Slots slots = Traps(std::make_index_sequence<58>());
  for (const auto& [slot, function] : functions) slots[slot] = function;
  return slots;
}

/// Takes the place of the system's task bar in this process: reports what the program shows there.
void ReplaceTaskbar();

}  // namespace stand_in

#pragma once

#include <windows.h>

#include <atomic>
#include <exception>
#include <functional>
#include <utility>

#include "platform/windows/com_reference.h"
#include "platform/windows/webview2.h"

namespace platform {

/// Identifier of an interface that the program implements.
template <typename Interface>
inline constexpr IID kInterfaceId = {};

template <>
inline constexpr IID kInterfaceId<ICoreWebView2CreateCoreWebView2EnvironmentCompletedHandler> = {
    0x4e8a3389, 0xc9d8, 0x4bd2, {0xb6, 0xb5, 0x12, 0x4f, 0xee, 0x6c, 0xc1, 0x4d}};
template <>
inline constexpr IID kInterfaceId<ICoreWebView2CreateCoreWebView2ControllerCompletedHandler> = {
    0x6c4819f3, 0xc9b7, 0x4260, {0x81, 0x27, 0xc9, 0xf5, 0xbd, 0xe7, 0xf6, 0x8c}};
template <>
inline constexpr IID kInterfaceId<ICoreWebView2WebResourceRequestedEventHandler> = {
    0xab00b74c, 0x15f1, 0x4646, {0x80, 0xe8, 0xe7, 0x63, 0x41, 0xd2, 0x5d, 0x71}};
template <>
inline constexpr IID kInterfaceId<ICoreWebView2WebMessageReceivedEventHandler> = {
    0x57213f19, 0x00e6, 0x49fa, {0x8e, 0x07, 0x89, 0x8e, 0xa0, 0x1e, 0xcb, 0xd2}};
template <>
inline constexpr IID kInterfaceId<ICoreWebView2NavigationCompletedEventHandler> = {
    0xd33a35bf, 0x1c49, 0x4f98, {0x93, 0xab, 0x00, 0x6e, 0x05, 0x33, 0xfe, 0x1c}};
template <>
inline constexpr IID kInterfaceId<ICoreWebView2NavigationStartingEventHandler> = {
    0x9adbe429, 0xf36d, 0x432b, {0x9d, 0xdc, 0xf8, 0x88, 0x1f, 0xbd, 0x76, 0xe3}};
template <>
inline constexpr IID kInterfaceId<ICoreWebView2NewWindowRequestedEventHandler> = {
    0xd4c185fe, 0xc81c, 0x4989, {0x97, 0xaf, 0x2d, 0x3f, 0xa7, 0xab, 0x56, 0x51}};
template <>
inline constexpr IID kInterfaceId<ICoreWebView2ProcessFailedEventHandler> = {
    0x79e0aea4, 0x990b, 0x42d9, {0xaa, 0x1d, 0x0f, 0xcc, 0x2e, 0x5b, 0xc7, 0xf1}};

// Handlers are never deleted through their interface.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// A callback object. The caller that creates it owns the first reference. Invoke always returns success: the
/// web view ignores failures, and exceptions must not pass through its frames.
template <typename Interface>
class EventHandler final : public Interface {
 public:
  using First = typename Interface::First;
  using Second = typename Interface::Second;
  using Function = std::function<void(First, Second)>;
  explicit EventHandler(Function function) : function_(std::move(function)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
    if (object == nullptr) return E_POINTER;
    const bool isSupported = IsEqualIID(id, IID_IUnknown) || IsEqualIID(id, kInterfaceId<Interface>);
    *object = isSupported ? static_cast<Interface*>(this) : nullptr;
    if (!isSupported) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }

  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }

  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

  HRESULT STDMETHODCALLTYPE Invoke(First first, Second second) override {
    try {
      function_(first, second);
    } catch (const std::exception&) {
    }
    return S_OK;
  }

 private:
  ~EventHandler() = default;

  std::atomic<ULONG> references_{1};
  const Function function_;
};

#pragma GCC diagnostic pop

template <typename Interface>
ComReference<Interface> MakeHandler(typename EventHandler<Interface>::Function function) {
  return ComReference<Interface>::Adopt(new EventHandler<Interface>(std::move(function)));
}

}  // namespace platform

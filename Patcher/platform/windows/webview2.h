#pragma once

#include <windows.h>

#include <eventtoken.h>
#include <objidl.h>
#include <unknwn.h>

/// The WebView2 interfaces that this program uses. The order of the methods is the order of the slots in the
/// binary interface. An unused method is named `Unused` with the number of its slot.

// Interfaces are never deleted directly; IUnknown counts references.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

struct ICoreWebView2;

#define WEBVIEW2_METHOD virtual HRESULT STDMETHODCALLTYPE
#define WEBVIEW2_UNUSED(slot) virtual void STDMETHODCALLTYPE Unused##slot() = 0

/// Every kind of request: COREWEBVIEW2_WEB_RESOURCE_CONTEXT_ALL.
enum COREWEBVIEW2_WEB_RESOURCE_CONTEXT : int { COREWEBVIEW2_WEB_RESOURCE_CONTEXT_ALL = 0 };

struct ICoreWebView2WebResourceRequest : IUnknown {
  WEBVIEW2_METHOD get_Uri(LPWSTR* uri) = 0;
};

struct ICoreWebView2WebResourceResponse : IUnknown {};

struct ICoreWebView2WebResourceRequestedEventArgs : IUnknown {
  WEBVIEW2_METHOD get_Request(ICoreWebView2WebResourceRequest** request) = 0;
  WEBVIEW2_UNUSED(4);
  WEBVIEW2_METHOD put_Response(ICoreWebView2WebResourceResponse* response) = 0;
};

struct ICoreWebView2WebMessageReceivedEventArgs : IUnknown {
  WEBVIEW2_UNUSED(3);
  WEBVIEW2_UNUSED(4);
  WEBVIEW2_METHOD TryGetWebMessageAsString(LPWSTR* text) = 0;
};

struct ICoreWebView2NavigationStartingEventArgs : IUnknown {
  WEBVIEW2_METHOD get_Uri(LPWSTR* uri) = 0;
  WEBVIEW2_UNUSED(4);
  WEBVIEW2_UNUSED(5);
  WEBVIEW2_UNUSED(6);
  WEBVIEW2_UNUSED(7);
  WEBVIEW2_METHOD put_Cancel(BOOL cancel) = 0;
  WEBVIEW2_METHOD get_NavigationId(UINT64* id) = 0;
};

struct ICoreWebView2NewWindowRequestedEventArgs : IUnknown {
  WEBVIEW2_UNUSED(3);
  WEBVIEW2_UNUSED(4);
  WEBVIEW2_UNUSED(5);
  WEBVIEW2_METHOD put_Handled(BOOL handled) = 0;
};

struct ICoreWebView2NavigationCompletedEventArgs : IUnknown {
  WEBVIEW2_UNUSED(3);
  WEBVIEW2_UNUSED(4);
  WEBVIEW2_METHOD get_NavigationId(UINT64* id) = 0;
};

/// The kinds of failure that end the page.
enum COREWEBVIEW2_PROCESS_FAILED_KIND : int {
  COREWEBVIEW2_PROCESS_FAILED_KIND_BROWSER_PROCESS_EXITED = 0,
  COREWEBVIEW2_PROCESS_FAILED_KIND_RENDER_PROCESS_EXITED = 1,
};

struct ICoreWebView2ProcessFailedEventArgs : IUnknown {
  WEBVIEW2_METHOD get_ProcessFailedKind(COREWEBVIEW2_PROCESS_FAILED_KIND* kind) = 0;
};

/// The program moves the focus: COREWEBVIEW2_MOVE_FOCUS_REASON_PROGRAMMATIC.
enum COREWEBVIEW2_MOVE_FOCUS_REASON : int { COREWEBVIEW2_MOVE_FOCUS_REASON_PROGRAMMATIC = 0 };

/// A callback that the program implements: one method after the methods of IUnknown.
#define WEBVIEW2_HANDLER(name, first, second)              \
  struct name : IUnknown {                                 \
    using First = first;                                   \
    using Second = second;                                 \
    WEBVIEW2_METHOD Invoke(first value, second other) = 0; \
  }

struct ICoreWebView2Environment;
struct ICoreWebView2Controller;

WEBVIEW2_HANDLER(ICoreWebView2CreateCoreWebView2EnvironmentCompletedHandler, HRESULT,
                 ICoreWebView2Environment*);
WEBVIEW2_HANDLER(ICoreWebView2CreateCoreWebView2ControllerCompletedHandler, HRESULT,
                 ICoreWebView2Controller*);
WEBVIEW2_HANDLER(ICoreWebView2WebResourceRequestedEventHandler, ICoreWebView2*,
                 ICoreWebView2WebResourceRequestedEventArgs*);
WEBVIEW2_HANDLER(ICoreWebView2WebMessageReceivedEventHandler, ICoreWebView2*,
                 ICoreWebView2WebMessageReceivedEventArgs*);
WEBVIEW2_HANDLER(ICoreWebView2NavigationStartingEventHandler, ICoreWebView2*,
                 ICoreWebView2NavigationStartingEventArgs*);
WEBVIEW2_HANDLER(ICoreWebView2NavigationCompletedEventHandler, ICoreWebView2*,
                 ICoreWebView2NavigationCompletedEventArgs*);
WEBVIEW2_HANDLER(ICoreWebView2NewWindowRequestedEventHandler, ICoreWebView2*,
                 ICoreWebView2NewWindowRequestedEventArgs*);
WEBVIEW2_HANDLER(ICoreWebView2ProcessFailedEventHandler, ICoreWebView2*,
                 ICoreWebView2ProcessFailedEventArgs*);

struct ICoreWebView2Environment : IUnknown {
  WEBVIEW2_METHOD CreateCoreWebView2Controller(
      HWND parent, ICoreWebView2CreateCoreWebView2ControllerCompletedHandler* handler) = 0;
  WEBVIEW2_METHOD CreateWebResourceResponse(IStream* content, int status, LPCWSTR reason, LPCWSTR headers,
                                            ICoreWebView2WebResourceResponse** response) = 0;
};

struct ICoreWebView2Controller : IUnknown {
  WEBVIEW2_UNUSED(3);
  WEBVIEW2_UNUSED(4);
  WEBVIEW2_UNUSED(5);
  WEBVIEW2_METHOD put_Bounds(RECT bounds) = 0;
  WEBVIEW2_UNUSED(7);
  WEBVIEW2_UNUSED(8);
  WEBVIEW2_UNUSED(9);
  WEBVIEW2_UNUSED(10);
  WEBVIEW2_UNUSED(11);
  WEBVIEW2_METHOD MoveFocus(COREWEBVIEW2_MOVE_FOCUS_REASON reason) = 0;
  WEBVIEW2_UNUSED(13);
  WEBVIEW2_UNUSED(14);
  WEBVIEW2_UNUSED(15);
  WEBVIEW2_UNUSED(16);
  WEBVIEW2_UNUSED(17);
  WEBVIEW2_UNUSED(18);
  WEBVIEW2_UNUSED(19);
  WEBVIEW2_UNUSED(20);
  WEBVIEW2_UNUSED(21);
  WEBVIEW2_UNUSED(22);
  WEBVIEW2_METHOD NotifyParentWindowPositionChanged() = 0;
  WEBVIEW2_UNUSED(24);
  WEBVIEW2_METHOD get_CoreWebView2(ICoreWebView2** view) = 0;
};

struct ICoreWebView2 : IUnknown {
  WEBVIEW2_UNUSED(3);
  WEBVIEW2_UNUSED(4);
  WEBVIEW2_UNUSED(5);
  WEBVIEW2_METHOD NavigateToString(LPCWSTR page) = 0;
  WEBVIEW2_METHOD add_NavigationStarting(ICoreWebView2NavigationStartingEventHandler* handler,
                                         EventRegistrationToken* token) = 0;
  WEBVIEW2_UNUSED(8);
  WEBVIEW2_UNUSED(9);
  WEBVIEW2_UNUSED(10);
  WEBVIEW2_UNUSED(11);
  WEBVIEW2_UNUSED(12);
  WEBVIEW2_UNUSED(13);
  WEBVIEW2_UNUSED(14);
  WEBVIEW2_METHOD add_NavigationCompleted(ICoreWebView2NavigationCompletedEventHandler* handler,
                                          EventRegistrationToken* token) = 0;
  WEBVIEW2_UNUSED(16);
  WEBVIEW2_UNUSED(17);
  WEBVIEW2_UNUSED(18);
  WEBVIEW2_UNUSED(19);
  WEBVIEW2_UNUSED(20);
  WEBVIEW2_UNUSED(21);
  WEBVIEW2_UNUSED(22);
  WEBVIEW2_UNUSED(23);
  WEBVIEW2_UNUSED(24);
  WEBVIEW2_METHOD add_ProcessFailed(ICoreWebView2ProcessFailedEventHandler* handler,
                                    EventRegistrationToken* token) = 0;
  WEBVIEW2_UNUSED(26);
  WEBVIEW2_UNUSED(27);
  WEBVIEW2_UNUSED(28);
  WEBVIEW2_UNUSED(29);
  WEBVIEW2_UNUSED(30);
  WEBVIEW2_UNUSED(31);
  WEBVIEW2_UNUSED(32);
  WEBVIEW2_METHOD PostWebMessageAsString(LPCWSTR text) = 0;
  WEBVIEW2_METHOD add_WebMessageReceived(ICoreWebView2WebMessageReceivedEventHandler* handler,
                                         EventRegistrationToken* token) = 0;
  WEBVIEW2_UNUSED(35);
  WEBVIEW2_UNUSED(36);
  WEBVIEW2_UNUSED(37);
  WEBVIEW2_UNUSED(38);
  WEBVIEW2_UNUSED(39);
  WEBVIEW2_UNUSED(40);
  WEBVIEW2_UNUSED(41);
  WEBVIEW2_UNUSED(42);
  WEBVIEW2_UNUSED(43);
  WEBVIEW2_METHOD add_NewWindowRequested(ICoreWebView2NewWindowRequestedEventHandler* handler,
                                         EventRegistrationToken* token) = 0;
  WEBVIEW2_UNUSED(45);
  WEBVIEW2_UNUSED(46);
  WEBVIEW2_UNUSED(47);
  WEBVIEW2_UNUSED(48);
  WEBVIEW2_UNUSED(49);
  WEBVIEW2_UNUSED(50);
  WEBVIEW2_UNUSED(51);
  WEBVIEW2_UNUSED(52);
  WEBVIEW2_UNUSED(53);
  WEBVIEW2_UNUSED(54);
  WEBVIEW2_METHOD add_WebResourceRequested(ICoreWebView2WebResourceRequestedEventHandler* handler,
                                           EventRegistrationToken* token) = 0;
  WEBVIEW2_UNUSED(56);
  WEBVIEW2_METHOD AddWebResourceRequestedFilter(LPCWSTR pattern,
                                                COREWEBVIEW2_WEB_RESOURCE_CONTEXT context) = 0;
};

#undef WEBVIEW2_METHOD
#undef WEBVIEW2_UNUSED
#undef WEBVIEW2_HANDLER

#pragma GCC diagnostic pop

/// Exported by WebView2Loader.dll. `options` is null: this program does not use that interface.
extern "C" HRESULT STDMETHODCALLTYPE
CreateCoreWebView2EnvironmentWithOptions(LPCWSTR browserFolder, LPCWSTR dataFolder, IUnknown* options,
                                         ICoreWebView2CreateCoreWebView2EnvironmentCompletedHandler* handler);

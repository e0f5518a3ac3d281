#include <objbase.h>
#include <shobjidl.h>

#include "objects.h"

namespace stand_in {
namespace {

/// One object for all callers, never released.
struct Shared {
  void* const* table;
};
extern Shared taskbar;

HRESULT __stdcall GetItself(Shared* self, REFIID, void** object) {
  *object = self;
  return S_OK;
}

ULONG __stdcall Count(Shared*) { return 1; }

HRESULT __stdcall CreateInstance(Shared*, IUnknown*, REFIID id, void** object) {
  *object = id == IID_ITaskbarList3 ? &taskbar : nullptr;
  return *object != nullptr ? S_OK : E_NOINTERFACE;
}

HRESULT __stdcall Initialize(Shared*) { return S_OK; }

HRESULT __stdcall SetProgressValue(Shared*, HWND, ULONGLONG done, ULONGLONG total) {
  SendToDriver({"taskbar", "value", std::to_string(done), std::to_string(total)});
  return S_OK;
}

HRESULT __stdcall SetProgressState(Shared*, HWND, int state) {
  SendToDriver({"taskbar", "state", std::to_string(state)});
  return S_OK;
}

const Slots kTaskbar = Table({At(0, &GetItself), At(1, &Count), At(2, &Count), At(3, &Initialize),
                              At(9, &SetProgressValue), At(10, &SetProgressState)});
const Slots kFactory = Table({At(0, &GetItself), At(1, &Count), At(2, &Count), At(3, &CreateInstance)});
Shared taskbar{kTaskbar.data()};
Shared factory{kFactory.data()};

}  // namespace

void ReplaceTaskbar() {
  DWORD unused = 0;
  CoRegisterClassObject(CLSID_TaskbarList, reinterpret_cast<IUnknown*>(&factory), CLSCTX_INPROC_SERVER,
                        REGCLS_MULTIPLEUSE, &unused);
}

}  // namespace stand_in

#include "shell/screen_reader.h"

#include <objbase.h>
// After objbase.h, which it needs.
#include <oleacc.h>

void name_for_screen_readers(HWND control, const wchar_t* name) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    IAccPropServices* services = nullptr;
    if (FAILED(CoCreateInstance(CLSID_AccPropServices, nullptr, CLSCTX_INPROC_SERVER, IID_IAccPropServices,
                                reinterpret_cast<void**>(&services))))
        return;
    services->SetHwndPropStr(control, static_cast<DWORD>(OBJID_CLIENT), CHILDID_SELF, PROPID_ACC_NAME, name);
    services->Release();
}

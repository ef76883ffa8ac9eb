#pragma once

#include <windows.h>

#include <comdef.h>
#include <oaidl.h>

#include <gtest/gtest.h>
#include <string>

/// A COM error-information object with that description; the caller owns the reference.
IErrorInfo* MakeErrorInformation(const wchar_t* description);

/// Windows' own message for an HRESULT without its line break; empty when it has none.
std::wstring SystemMessage(HRESULT result);

/// The HRESULT that the action throws; a test failure when it throws none.
template <typename Action>
HRESULT ThrownBy(Action action) {
    try {
        action();
    } catch (const _com_error& error) {
        return error.Error();
    }
    ADD_FAILURE() << "nothing was thrown";
    return S_OK;
}

#pragma once

#include <windows.h>

#include <string>

/// What a client's call comes to.
struct Outcome {
    enum class Kind {
        Success, ///< what it asked for
        Null,    ///< S_OK, but null or nothing
        Failure, ///< `result`; when there is a description, it becomes the object's error information
    };

    Kind kind = Kind::Success;
    HRESULT result = S_OK;
    std::wstring description;

    bool IsSuccess() const { return kind == Kind::Success; }
};

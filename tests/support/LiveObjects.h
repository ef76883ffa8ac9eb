#pragma once

#include "tests/support/ImportPatch.h"

#include <windows.h>

#include <gdiplus.h>

#include <cstddef>
#include <tuple>
#include <vector>

/// What the code under test has made and not released yet, seen through its imports: device contexts that it got with
/// GetDC, and objects of GDI+. Counts from the construction of a `LiveDeviceContexts` or `LiveGraphics` on; one at a
/// time.
class LiveObjects {
public:
    LiveObjects(const LiveObjects&) = delete;
    LiveObjects& operator=(const LiveObjects&) = delete;

    static std::size_t Count() { return Live.size(); }
    static std::size_t CountMade() { return Made; }

protected:
    LiveObjects() {
        Live.clear();
        Made = 0;
    }
    ~LiveObjects() = default;

    static void Add(const void* object) {
        Live.push_back(object);
        ++Made;
    }
    static void Remove(const void* object) { std::erase(Live, object); }

private:
    static inline std::vector<const void*> Live;
    static inline std::size_t Made;
};

class LiveDeviceContexts : public LiveObjects {
    static inline auto* const Get = ImportedNow<decltype(GetDC)>("GetDC");
    static inline auto* const Release = ImportedNow<decltype(ReleaseDC)>("ReleaseDC");

    ImportPatch<decltype(GetDC)> get_{"GetDC", [](HWND window) -> HDC {
                                          const HDC context = Get(window);
                                          Add(context);
                                          return context;
                                      }};
    ImportPatch<decltype(ReleaseDC)> release_{"ReleaseDC", [](HWND window, HDC context) -> int {
                                                  Remove(context);
                                                  return Release(window, context);
                                              }};
};

/// Bitmaps, graphics, brushes, formats, fonts and font families. For a program that imports all of them. No two makers
/// and no two releasers may have the same type: each type has one original.
class LiveGraphics : public LiveObjects {
    /// A function whose last argument takes the new object.
    template <typename Function>
    class Maker;

    template <typename... Arguments>
    class Maker<Gdiplus::GpStatus(Arguments...)> {
        using Function = Gdiplus::GpStatus(Arguments...);

    public:
        explicit Maker(const char* name) : patch_(Keep(name), Make) {}

    private:
        static const char* Keep(const char* name) {
            Original = ImportedNow<Function>(name);
            return name;
        }
        static Gdiplus::GpStatus Make(Arguments... arguments) {
            const Gdiplus::GpStatus status = Original(arguments...);
            if (status == Gdiplus::Ok)
                Add(*std::get<sizeof...(Arguments) - 1>(std::tie(arguments...)));
            return status;
        }

        static inline Function* Original;
        ImportPatch<Function> patch_;
    };

    template <typename Object>
    class Releaser {
        using Function = Gdiplus::GpStatus(Object*);

    public:
        explicit Releaser(const char* name) : patch_(Keep(name), Release) {}

    private:
        static const char* Keep(const char* name) {
            Original = ImportedNow<Function>(name);
            return name;
        }
        static Gdiplus::GpStatus Release(Object* object) {
            Remove(object);
            return Original(object);
        }

        static inline Function* Original;
        ImportPatch<Function> patch_;
    };

    Maker<decltype(Gdiplus::DllExports::GdipCreateBitmapFromScan0)> bitmap_{"GdipCreateBitmapFromScan0"};
    Maker<decltype(Gdiplus::DllExports::GdipGetImageGraphicsContext)> ofImage_{"GdipGetImageGraphicsContext"};
    Maker<decltype(Gdiplus::DllExports::GdipCreateFromHDC)> ofContext_{"GdipCreateFromHDC"};
    Maker<decltype(Gdiplus::DllExports::GdipCreateSolidFill)> brush_{"GdipCreateSolidFill"};
    Maker<decltype(Gdiplus::DllExports::GdipCreateStringFormat)> format_{"GdipCreateStringFormat"};
    Maker<decltype(Gdiplus::DllExports::GdipCreateFont)> font_{"GdipCreateFont"};
    Maker<decltype(Gdiplus::DllExports::GdipCreateFontFamilyFromName)> family_{"GdipCreateFontFamilyFromName"};
    Releaser<Gdiplus::GpImage> disposedBitmap_{"GdipDisposeImage"};
    Releaser<Gdiplus::GpGraphics> deletedGraphics_{"GdipDeleteGraphics"};
    Releaser<Gdiplus::GpBrush> deletedBrush_{"GdipDeleteBrush"};
    Releaser<Gdiplus::GpStringFormat> deletedFormat_{"GdipDeleteStringFormat"};
    Releaser<Gdiplus::GpFont> deletedFont_{"GdipDeleteFont"};
    Releaser<Gdiplus::GpFontFamily> deletedFamily_{"GdipDeleteFontFamily"};
};

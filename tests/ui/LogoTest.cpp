#include "ui/Logo.h"

#include "tests/support/ComApartment.h"
#include "tests/support/ComErrors.h"
#include "tests/support/ImportPatch.h"
#include "ui/ResourceStream.h"

#include <gtest/gtest.h>

namespace {

/// GDI+ runs, and what it decodes and frees is recorded.
class Logo : public testing::Test {
protected:
    void SetUp() override {
        const Gdiplus::GdiplusStartupInput input;
        Gdiplus::GdiplusStartup(&token_, &input, nullptr);
        Source = nullptr;
        Disposals = 0;
    }
    void TearDown() override {
        LogoBitmap.reset();
        Gdiplus::GdiplusShutdown(token_);
    }

    /// How many references the object has now.
    static ULONG ReferencesOf(IUnknown* object) {
        object->AddRef();
        return object->Release();
    }

    /// What the last bitmap was made from.
    static inline IStream* Source;
    static inline ULONG SourceReferences;
    static inline int Disposals;

private:
    using CreateBitmap = decltype(Gdiplus::DllExports::GdipCreateBitmapFromStream);
    using DisposeImage = decltype(Gdiplus::DllExports::GdipDisposeImage);

    static inline CreateBitmap* const Create = ImportedNow<CreateBitmap>("GdipCreateBitmapFromStream");
    static inline DisposeImage* const Dispose = ImportedNow<DisposeImage>("GdipDisposeImage");

    ComApartment apartment_;
    ULONG_PTR token_ = 0;
    ImportPatch<CreateBitmap> create_{"GdipCreateBitmapFromStream", [](IStream* stream, Gdiplus::GpBitmap** bitmap) {
                                          Source = stream;
                                          SourceReferences = stream == nullptr ? 0 : ReferencesOf(stream);
                                          return Create(stream, bitmap);
                                      }};
    ImportPatch<DisposeImage> dispose_{"GdipDisposeImage", [](Gdiplus::GpImage* image) {
                                           ++Disposals;
                                           return Dispose(image);
                                       }};
};

/// Makes every stream over the logo refuse the interfaces it is asked for, by a patch of the class's table.
class Refusal {
public:
    explicit Refusal(HRESULT answer) : slot_(Table()), original_(*slot_) {
        Answer = answer;
        SetImport(slot_, reinterpret_cast<void*>(&Refuse));
    }
    Refusal(const Refusal&) = delete;
    Refusal& operator=(const Refusal&) = delete;
    ~Refusal() { SetImport(slot_, original_); }

private:
    static void** Table() {
        IUnknown* const stream = new ResourceStream;
        void** const table = *reinterpret_cast<void***>(stream);
        stream->Release();
        return table;
    }
    static HRESULT STDMETHODCALLTYPE Refuse(IUnknown*, REFIID, void** object) {
        *object = nullptr;
        return Answer;
    }

    static inline HRESULT Answer;

    void** slot_;
    void* original_;
};

Gdiplus::ARGB PixelAt(INT x, INT y) {
    Gdiplus::Color color;
    EXPECT_EQ(LogoBitmap->GetPixel(x, y, &color), Gdiplus::Ok);
    return color.GetValue();
}

} // namespace

TEST_F(Logo, IsDecodedFromTheResource) {
    LoadLogo();
    ASSERT_NE(LogoBitmap, nullptr);
    EXPECT_EQ(LogoBitmap->GetLastStatus(), Gdiplus::Ok);
    EXPECT_EQ(LogoBitmap->GetWidth(), 64U);
    EXPECT_EQ(LogoBitmap->GetHeight(), 64U);
    EXPECT_EQ(PixelAt(0, 0) >> 24, 0U); // a corner of the drawing: clear
    EXPECT_EQ(PixelAt(32, 10), 0xFFFBEED0);
    EXPECT_EQ(PixelAt(20, 20), 0xFF6B1F3A);
    EXPECT_EQ(PixelAt(10, 32), 0xFF8A5A24);
}

TEST_F(Logo, IsDecodedWithAReferenceBesidesTheCreators) {
    LoadLogo();
    ASSERT_NE(Source, nullptr);
    EXPECT_EQ(SourceReferences, 2U);
}

TEST_F(Logo, LeavesTheCreatorsReferenceToItsStreamWhenItIsGone) {
    const LONG liveBefore = LiveObjectCount;
    LoadLogo();
    LogoBitmap.reset();
    ASSERT_EQ(LiveObjectCount, liveBefore + 1);
    ASSERT_NE(Source, nullptr);
    EXPECT_EQ(ReferencesOf(Source), 1U);
}

TEST_F(Logo, ReplacesAnEarlierOne) {
    LoadLogo();
    const Gdiplus::Bitmap* const earlier = LogoBitmap.get();
    EXPECT_EQ(Disposals, 0);
    LoadLogo();
    EXPECT_EQ(Disposals, 1);
    EXPECT_NE(LogoBitmap.get(), earlier);
    EXPECT_EQ(LogoBitmap->GetLastStatus(), Gdiplus::Ok);
}

TEST_F(Logo, IsEmptyWhenTheStreamLacksTheInterface) {
    const Refusal refusal(E_NOINTERFACE);
    LoadLogo();
    ASSERT_NE(LogoBitmap, nullptr);
    EXPECT_EQ(Source, nullptr);
    EXPECT_NE(LogoBitmap->GetLastStatus(), Gdiplus::Ok);
}

TEST_F(Logo, ThrowsAnyOtherFailureToGetTheInterface) {
    const Refusal refusal(E_OUTOFMEMORY);
    EXPECT_EQ(ThrownBy(LoadLogo), E_OUTOFMEMORY);
    EXPECT_EQ(LogoBitmap, nullptr);
}

TEST_F(Logo, ThrowsWhenTheResourceIsMissing) {
    const ImportPatch<decltype(FindResourceW)> find("FindResourceW",
                                                    [](HMODULE, LPCWSTR, LPCWSTR) -> HRSRC { return nullptr; });
    EXPECT_EQ(ThrownBy(LoadLogo), E_FAIL);
    EXPECT_EQ(LogoBitmap, nullptr);
}

TEST_F(Logo, IsNoneWithoutMemory) {
    LoadLogo();
    const ImportPatch<decltype(Gdiplus::DllExports::GdipAlloc)> alloc("GdipAlloc",
                                                                      [](std::size_t) -> void* { return nullptr; });
    LoadLogo();
    EXPECT_EQ(LogoBitmap, nullptr);
}

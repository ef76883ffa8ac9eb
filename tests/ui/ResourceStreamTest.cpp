#include "ui/ResourceStream.h"

#include "tests/support/ComErrors.h"
#include "tests/support/ImportPatch.h"

#include <cstring>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

/// What the stream is over.
std::string_view Logo() {
    const HRSRC resource = FindResourceW(nullptr, MAKEINTRESOURCEW(101), L"FILE");
    return {static_cast<const char*>(LockResource(LoadResource(nullptr, resource))), SizeofResource(nullptr, resource)};
}

const auto Size = static_cast<LONGLONG>(Logo().size());

LARGE_INTEGER Signed(LONGLONG value) {
    return {.QuadPart = value};
}

ULARGE_INTEGER Unsigned(ULONGLONG value) {
    return {.QuadPart = value};
}

/// The next bytes, at most so many.
std::string ReadFrom(IStream* stream, ULONG count) {
    std::string bytes(count, '\0');
    ULONG read = 0;
    EXPECT_EQ(stream->Read(bytes.data(), count, &read), S_OK);
    bytes.resize(read);
    return bytes;
}

void MoveTo(IStream* stream, LONGLONG position) {
    EXPECT_EQ(stream->Seek(Signed(position), STREAM_SEEK_SET, nullptr), S_OK);
}

LONGLONG PositionOf(IStream* stream) {
    ULARGE_INTEGER position{};
    EXPECT_EQ(stream->Seek(Signed(0), STREAM_SEEK_CUR, &position), S_OK);
    return static_cast<LONGLONG>(position.QuadPart);
}

/// Calls the method in that slot of the object's table.
template <typename Result, typename... Arguments>
Result CallSlot(IStream* stream, std::size_t slot, Arguments... arguments) {
    using Method = Result(STDMETHODCALLTYPE*)(IStream*, Arguments...);
    void** const table = *reinterpret_cast<void***>(stream);
    return reinterpret_cast<Method>(table[slot])(stream, arguments...);
}

/// Records what it is given to write, and claims to have written what it is told to.
class Target final : public UnknownImpl<IStream> {
public:
    HRESULT Answer = S_OK;
    ULONG LeftOut = 0;
    std::vector<std::string> Chunks;

    std::string Bytes() const {
        std::string bytes;
        for (const std::string& chunk : Chunks)
            bytes += chunk;
        return bytes;
    }

    HRESULT STDMETHODCALLTYPE Write(const void* bytes, ULONG count, ULONG* written) override {
        Chunks.emplace_back(static_cast<const char*>(bytes), count);
        *written = count - LeftOut;
        return Answer;
    }

    HRESULT STDMETHODCALLTYPE Read(void*, ULONG, ULONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER, DWORD, ULARGE_INTEGER*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Revert() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG*, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Clone(IStream**) override { return E_NOTIMPL; }
};

/// Calls the stream as its clients do: through its interface.
class LogoStream : public testing::Test {
protected:
    void TearDown() override {
        Stream->Release();
        LiveObjectCount = LiveBefore; // each clone that went took one off that was never added
    }

    const LONG LiveBefore = LiveObjectCount;
    IStream* const Stream = new ResourceStream;
};

} // namespace

TEST_F(LogoStream, HasItsMethodsInTheSlotsThatClientsCall) {
    EXPECT_EQ(CallSlot<ULONG>(Stream, 1), 2U);
    EXPECT_EQ(CallSlot<ULONG>(Stream, 2), 1U);
    void* found = nullptr;
    EXPECT_EQ(CallSlot<HRESULT>(Stream, 0, &IID_IStream, &found), S_OK);
    EXPECT_EQ(found, Stream);
    EXPECT_EQ(CallSlot<ULONG>(Stream, 2), 1U);

    std::string bytes(4, '\0');
    ULONG count = 0;
    EXPECT_EQ(CallSlot<HRESULT>(Stream, 3, bytes.data(), ULONG{4}, &count), S_OK);
    EXPECT_EQ(bytes, Logo().substr(0, 4));
    EXPECT_EQ(CallSlot<HRESULT>(Stream, 4, bytes.data(), ULONG{4}, &count), E_NOTIMPL);
    ULARGE_INTEGER position{};
    EXPECT_EQ(CallSlot<HRESULT>(Stream, 5, Signed(-3), DWORD{STREAM_SEEK_CUR}, &position), S_OK);
    EXPECT_EQ(position.QuadPart, 1U);
    EXPECT_EQ(CallSlot<HRESULT>(Stream, 6, Unsigned(1)), E_NOTIMPL);

    Target target;
    ULARGE_INTEGER read{};
    ULARGE_INTEGER written{};
    EXPECT_EQ(CallSlot<HRESULT>(Stream, 7, static_cast<IStream*>(&target), Unsigned(3), &read, &written), S_OK);
    EXPECT_EQ(target.Bytes(), Logo().substr(1, 3));
    EXPECT_EQ(CallSlot<HRESULT>(Stream, 8, DWORD{STGC_DEFAULT}), E_NOTIMPL);
    EXPECT_EQ(CallSlot<HRESULT>(Stream, 9), E_NOTIMPL);
    EXPECT_EQ(CallSlot<HRESULT>(Stream, 10, Unsigned(0), Unsigned(1), DWORD{LOCK_WRITE}), S_OK);
    EXPECT_EQ(CallSlot<HRESULT>(Stream, 11, Unsigned(0), Unsigned(1), DWORD{LOCK_WRITE}), S_OK);

    STATSTG status{};
    EXPECT_EQ(CallSlot<HRESULT>(Stream, 12, &status, DWORD{STATFLAG_NONAME}), S_OK);
    EXPECT_EQ(status.cbSize.QuadPart, Logo().size());
    IStream* clone = nullptr;
    EXPECT_EQ(CallSlot<HRESULT>(Stream, 13, &clone), S_OK);
    EXPECT_EQ(CallSlot<ULONG>(clone, 2), 0U);
}

// References and interfaces

TEST_F(LogoStream, BeginsWithItsCreatorsReference) {
    EXPECT_EQ(Stream->AddRef(), 2U);
    EXPECT_EQ(Stream->Release(), 1U);
}

TEST_F(LogoStream, IsLiveUntilItsLastReferenceIsReleased) {
    EXPECT_EQ(LiveObjectCount, LiveBefore + 1);
    Stream->AddRef();
    Stream->Release();
    EXPECT_EQ(LiveObjectCount, LiveBefore + 1);
    IStream* const other = new ResourceStream;
    EXPECT_EQ(LiveObjectCount, LiveBefore + 2);
    EXPECT_EQ(other->Release(), 0U);
    EXPECT_EQ(LiveObjectCount, LiveBefore + 1);
}

namespace {

struct InterfaceCase {
    const char* name;
    IID iid;
};

class InterfaceOfTheLogoStream : public LogoStream, public testing::WithParamInterface<InterfaceCase> {};
class InterfaceThatTheLogoStreamLacks : public InterfaceOfTheLogoStream {};

std::string NameOf(const testing::TestParamInfo<InterfaceCase>& looked) {
    return looked.param.name;
}

} // namespace

INSTANTIATE_TEST_SUITE_P(, InterfaceOfTheLogoStream,
                         testing::Values(InterfaceCase{"IStream", IID_IStream},
                                         InterfaceCase{"IUnknown", IID_IUnknown}),
                         NameOf);

TEST_P(InterfaceOfTheLogoStream, IsTheStreamWithOneMoreReference) {
    void* found = nullptr;
    EXPECT_EQ(Stream->QueryInterface(GetParam().iid, &found), S_OK);
    EXPECT_EQ(found, Stream);
    EXPECT_EQ(Stream->Release(), 1U);
}

INSTANTIATE_TEST_SUITE_P(, InterfaceThatTheLogoStreamLacks,
                         testing::Values(InterfaceCase{"ISequentialStream", IID_ISequentialStream},
                                         InterfaceCase{"IDispatch", IID_IDispatch}),
                         NameOf);

TEST_P(InterfaceThatTheLogoStreamLacks, IsRefused) {
    void* found = this;
    EXPECT_EQ(Stream->QueryInterface(GetParam().iid, &found), E_NOINTERFACE);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(Stream->AddRef(), 2U);
    Stream->Release();
}

// Construction

namespace {

class ResourceStep : public testing::TestWithParam<const char*> {};

} // namespace

INSTANTIATE_TEST_SUITE_P(, ResourceStep, testing::Values("FindResourceW", "LoadResource", "LockResource"),
                         [](const auto& function) { return std::string(function.param); });

TEST_P(ResourceStep, ThatFindsNothingFailsTheConstruction) {
    const LONG liveBefore = LiveObjectCount;
    // Each of them returns a pointer; what it is given does not matter here.
    const ImportPatch<void*()> step(GetParam(), []() -> void* { return nullptr; });
    EXPECT_EQ(ThrownBy([] { (new ResourceStream)->Release(); }), E_FAIL);
    EXPECT_EQ(LiveObjectCount, liveBefore);
}

// Read

TEST_F(LogoStream, ReadGivesTheResourceFromStartToEnd) {
    EXPECT_TRUE(Logo().starts_with("\x89PNG"));
    EXPECT_EQ(ReadFrom(Stream, static_cast<ULONG>(Size)), Logo());
    EXPECT_EQ(PositionOf(Stream), Size);
}

TEST_F(LogoStream, ReadGoesOnWhereTheLastOneEnded) {
    EXPECT_EQ(ReadFrom(Stream, 8), Logo().substr(0, 8));
    EXPECT_EQ(ReadFrom(Stream, 5), Logo().substr(8, 5));
    EXPECT_EQ(PositionOf(Stream), 13);
}

TEST_F(LogoStream, ReadGivesWhatIsLeftAndNoMore) {
    MoveTo(Stream, Size - 3);
    std::string buffer(5, '.');
    ULONG read = 0;
    EXPECT_EQ(Stream->Read(buffer.data(), MAXDWORD, &read), S_OK);
    EXPECT_EQ(read, 3U);
    EXPECT_EQ(buffer, std::string(Logo().substr(Logo().size() - 3)) + "..");
    EXPECT_EQ(PositionOf(Stream), Size);
}

TEST_F(LogoStream, ReadAtTheEndSucceedsWithNothing) {
    MoveTo(Stream, Size);
    std::string buffer(5, '.');
    ULONG read = 77;
    EXPECT_EQ(Stream->Read(buffer.data(), 5, &read), S_OK);
    EXPECT_EQ(read, 0U);
    EXPECT_EQ(buffer, ".....");
    EXPECT_EQ(PositionOf(Stream), Size);
}

TEST_F(LogoStream, ReadNeedNotTellHowMuchItRead) {
    std::string buffer(5, '.');
    EXPECT_EQ(Stream->Read(buffer.data(), 5, nullptr), S_OK);
    EXPECT_EQ(buffer, Logo().substr(0, 5));
    EXPECT_EQ(PositionOf(Stream), 5);
}

// Seek

namespace {

struct SeekCase {
    const char* name;
    LONGLONG from;
    LONGLONG move;
    DWORD origin;
    /// None where the move fails.
    std::optional<LONGLONG> to;
};

void ExpectSeek(IStream* stream, const SeekCase& seek) {
    const auto& [name, from, move, origin, to] = seek;
    MoveTo(stream, from);
    ULARGE_INTEGER position = Unsigned(MAXULONGLONG);
    EXPECT_EQ(stream->Seek(Signed(move), origin, &position), to ? S_OK : E_FAIL);
    EXPECT_EQ(position.QuadPart, to ? static_cast<ULONGLONG>(*to) : MAXULONGLONG);
    EXPECT_EQ(PositionOf(stream), to.value_or(from));
}

class SeekInTheLogoStream : public LogoStream, public testing::WithParamInterface<SeekCase> {};

constexpr LONGLONG TwoTo31 = 1LL << 31;
constexpr LONGLONG TwoTo32 = 1LL << 32;

} // namespace

INSTANTIATE_TEST_SUITE_P(
    , SeekInTheLogoStream,
    testing::Values(SeekCase{"ToThePlaceItIsAt", 10, 10, STREAM_SEEK_SET, 10},
                    SeekCase{"ToTheStart", 10, 0, STREAM_SEEK_SET, 0},
                    SeekCase{"ToTheEnd", 10, Size, STREAM_SEEK_SET, Size},
                    SeekCase{"BeforeTheStart", 10, -1, STREAM_SEEK_SET, std::nullopt},
                    SeekCase{"BehindTheEnd", 10, Size + 1, STREAM_SEEK_SET, std::nullopt},
                    SeekCase{"ToTheLargestOf32Bits", 10, TwoTo31 - 1, STREAM_SEEK_SET, std::nullopt},
                    SeekCase{"ToTheSmallestOf32Bits", 10, -TwoTo31, STREAM_SEEK_SET, std::nullopt},
                    SeekCase{"JustBeyond32Bits", 10, TwoTo31, STREAM_SEEK_SET, std::nullopt},
                    SeekCase{"JustBelow32Bits", 10, -TwoTo31 - 1, STREAM_SEEK_SET, std::nullopt},
                    SeekCase{"ToAPlaceIn64Bits", 10, TwoTo32 + 5, STREAM_SEEK_SET, std::nullopt},
                    SeekCase{"ForwardFromWhereItIs", 10, 7, STREAM_SEEK_CUR, 17},
                    SeekCase{"BackFromWhereItIs", 10, -7, STREAM_SEEK_CUR, 3},
                    SeekCase{"NowhereFromWhereItIs", 10, 0, STREAM_SEEK_CUR, 10},
                    SeekCase{"BackToTheStart", 10, -10, STREAM_SEEK_CUR, 0},
                    SeekCase{"BackOverTheStart", 10, -11, STREAM_SEEK_CUR, std::nullopt},
                    SeekCase{"ForwardToTheEnd", 10, Size - 10, STREAM_SEEK_CUR, Size},
                    SeekCase{"ForwardOverTheEnd", 10, Size - 9, STREAM_SEEK_CUR, std::nullopt},
                    SeekCase{"ForwardByTheMostOf32Bits", 10, TwoTo31 - 1, STREAM_SEEK_CUR, std::nullopt},
                    SeekCase{"BackByTheMostOf32Bits", 10, -TwoTo31, STREAM_SEEK_CUR, std::nullopt},
                    SeekCase{"ForwardBy64Bits", 10, TwoTo32 + 1, STREAM_SEEK_CUR, std::nullopt},
                    SeekCase{"BackBy64Bits", 10, -TwoTo32 - 1, STREAM_SEEK_CUR, std::nullopt},
                    SeekCase{"ByTheMostOf64Bits", 10, MAXLONGLONG, STREAM_SEEK_CUR, std::nullopt},
                    SeekCase{"FromTheEnd", 10, 0, STREAM_SEEK_END, Size},
                    SeekCase{"BackFromTheEnd", 10, -1, STREAM_SEEK_END, Size - 1},
                    SeekCase{"BackFromTheEndToTheStart", 10, -Size, STREAM_SEEK_END, 0},
                    SeekCase{"BackFromTheEndOverTheStart", 10, -Size - 1, STREAM_SEEK_END, std::nullopt},
                    SeekCase{"ForwardFromTheEnd", 10, 1, STREAM_SEEK_END, std::nullopt},
                    SeekCase{"BackFromTheEndBy64Bits", 10, -TwoTo32 - 1, STREAM_SEEK_END, std::nullopt},
                    SeekCase{"FromAnUnknownOrigin", 10, 5, 7, 5},
                    SeekCase{"FromAnUnknownOriginBeforeTheStart", 10, -1, 7, std::nullopt},
                    SeekCase{"FromAnUnknownOriginBehindTheEnd", 10, Size + 1, 7, std::nullopt}),
    [](const auto& seek) { return seek.param.name; });

TEST_P(SeekInTheLogoStream, MovesToItsTargetOrNotAtAll) {
    ExpectSeek(Stream, GetParam());
}

namespace {

/// A stream over an image that seems to have as many bytes as 32 bits can count. Nobody may read from it.
class SeekInAHugeImage : public testing::TestWithParam<SeekCase> {
    ImportPatch<decltype(SizeofResource)> size_{"SizeofResource", [](HMODULE, HRSRC) -> DWORD { return MAXDWORD; }};
};

constexpr LONGLONG Last = TwoTo31 - 1;

} // namespace

INSTANTIATE_TEST_SUITE_P(
    , SeekInAHugeImage,
    testing::Values(SeekCase{"ToTheLastOf31Bits", 10, Last, STREAM_SEEK_SET, Last},
                    SeekCase{"Beyond31Bits", 10, Last + 1, STREAM_SEEK_SET, std::nullopt},
                    SeekCase{"ToTheEndFromTheStart", 10, MAXDWORD, STREAM_SEEK_SET, std::nullopt},
                    SeekCase{"ForwardToTheLastOf31Bits", 10, Last - 10, STREAM_SEEK_CUR, Last},
                    SeekCase{"ForwardBeyond31Bits", 10, Last - 9, STREAM_SEEK_CUR, std::nullopt},
                    SeekCase{"NowhereFromTheLastOf31Bits", Last, 0, STREAM_SEEK_CUR, Last},
                    SeekCase{"ForwardFromTheLastOf31Bits", Last, 1, STREAM_SEEK_CUR, std::nullopt},
                    SeekCase{"ForwardToTheEnd", Last, Last, STREAM_SEEK_CUR, std::nullopt},
                    SeekCase{"BackFromTheLastOf31Bits", Last, -Last, STREAM_SEEK_CUR, 0},
                    SeekCase{"FromTheEnd", 10, 0, STREAM_SEEK_END, std::nullopt},
                    SeekCase{"BackFromTheEnd", 10, -1, STREAM_SEEK_END, std::nullopt},
                    SeekCase{"BackFromTheEndToTheFirstBeyond31Bits", 10, -Last, STREAM_SEEK_END, std::nullopt},
                    SeekCase{"BackFromTheEndByMoreThan31Bits", 10, -TwoTo31 - 1, STREAM_SEEK_END, std::nullopt},
                    SeekCase{"BackFromTheEndToTheLastOf31Bits", 10, -TwoTo31, STREAM_SEEK_END, Last},
                    SeekCase{"FromAnUnknownOriginToTheLastOf31Bits", 10, Last, 7, Last},
                    SeekCase{"FromAnUnknownOriginBeyond31Bits", 10, Last + 1, 7, std::nullopt}),
    [](const auto& seek) { return seek.param.name; });

TEST_P(SeekInAHugeImage, MovesNoFurtherThan31Bits) {
    IStream* const stream = new ResourceStream;
    ExpectSeek(stream, GetParam());
    stream->Release();
}

TEST_F(LogoStream, SeekNeedNotTellThePosition) {
    EXPECT_EQ(Stream->Seek(Signed(-4), STREAM_SEEK_END, nullptr), S_OK);
    EXPECT_EQ(ReadFrom(Stream, 5), Logo().substr(Logo().size() - 4));
}

// CopyTo

namespace {

struct CopyCase {
    const char* name;
    LONGLONG from;
    ULONGLONG count;
    /// The lengths of what the target is given.
    std::vector<std::size_t> chunks;
};

class CopyOfTheLogoStream : public LogoStream, public testing::WithParamInterface<CopyCase> {};

const auto BytesAfterOneChunk = static_cast<std::size_t>(Size - 1024);

} // namespace

INSTANTIATE_TEST_SUITE_P(
    , CopyOfTheLogoStream,
    testing::Values(CopyCase{"OfNothing", 0, 0, {}}, CopyCase{"OfAFewBytes", 3, 5, {5}},
                    CopyCase{"OfOneChunk", 0, 1024, {1024}}, CopyCase{"OfOneByteMore", 0, 1025, {1024, 1}},
                    CopyCase{"OfEverything", 0, static_cast<ULONGLONG>(Size), {1024, BytesAfterOneChunk}},
                    CopyCase{"OfMoreThanThereIs", 0, static_cast<ULONGLONG>(Size) + 1, {1024, BytesAfterOneChunk}},
                    CopyCase{"OfMoreThan32Bits", 0, static_cast<ULONGLONG>(TwoTo32), {1024, BytesAfterOneChunk}},
                    CopyCase{"OfTheMostOf64Bits", 0, MAXULONGLONG, {1024, BytesAfterOneChunk}},
                    CopyCase{"OfTheRest", Size - 6, 100, {6}}, CopyCase{"AtTheEnd", Size, 100, {}}),
    [](const auto& copy) { return copy.param.name; });

TEST_P(CopyOfTheLogoStream, GivesTheTargetWhatItAsksForInChunks) {
    const auto& [name, from, count, chunks] = GetParam();
    MoveTo(Stream, from);
    Target target;
    ULARGE_INTEGER read = Unsigned(MAXULONGLONG);
    ULARGE_INTEGER written = Unsigned(MAXULONGLONG);
    EXPECT_EQ(Stream->CopyTo(&target, Unsigned(count), &read, &written), S_OK);

    std::vector<std::size_t> lengths;
    for (const std::string& chunk : target.Chunks)
        lengths.push_back(chunk.size());
    EXPECT_EQ(lengths, chunks);
    const std::string bytes = target.Bytes();
    EXPECT_EQ(bytes, Logo().substr(static_cast<std::size_t>(from), bytes.size()));
    EXPECT_EQ(read.QuadPart, bytes.size());
    EXPECT_EQ(written.QuadPart, bytes.size());
    EXPECT_EQ(PositionOf(Stream), from + static_cast<LONGLONG>(bytes.size()));
}

TEST_F(LogoStream, CopyNeedNotTellItsSums) {
    Target target;
    ULARGE_INTEGER sum{};
    EXPECT_EQ(Stream->CopyTo(&target, Unsigned(5), nullptr, nullptr), S_OK);
    EXPECT_EQ(Stream->CopyTo(&target, Unsigned(6), &sum, nullptr), S_OK);
    EXPECT_EQ(sum.QuadPart, 6U);
    EXPECT_EQ(Stream->CopyTo(&target, Unsigned(7), nullptr, &sum), S_OK);
    EXPECT_EQ(sum.QuadPart, 7U);
    EXPECT_EQ(target.Bytes(), Logo().substr(0, 18));
}

TEST_F(LogoStream, CopyFailsAtOnceWhenTheTargetWritesLess) {
    Target target;
    target.LeftOut = 1;
    ULARGE_INTEGER read = Unsigned(77);
    ULARGE_INTEGER written = Unsigned(78);
    EXPECT_EQ(Stream->CopyTo(&target, Unsigned(MAXULONGLONG), &read, &written), E_FAIL);
    EXPECT_EQ(target.Chunks.size(), 1U);
    EXPECT_EQ(read.QuadPart, 77U);
    EXPECT_EQ(written.QuadPart, 78U);
}

TEST_F(LogoStream, CopyThrowsTheFailureOfTheTarget) {
    Target target;
    target.Answer = STG_E_MEDIUMFULL;
    ULARGE_INTEGER read = Unsigned(77);
    ULARGE_INTEGER written = Unsigned(78);
    EXPECT_EQ(ThrownBy([&] { Stream->CopyTo(&target, Unsigned(MAXULONGLONG), &read, &written); }), STG_E_MEDIUMFULL);
    EXPECT_EQ(target.Chunks.size(), 1U);
    EXPECT_EQ(read.QuadPart, 77U);
    EXPECT_EQ(written.QuadPart, 78U);
}

// Stat

namespace {

class StatusOfTheLogoStream : public LogoStream, public testing::WithParamInterface<DWORD> {};

} // namespace

INSTANTIATE_TEST_SUITE_P(, StatusOfTheLogoStream, testing::Values(STATFLAG_DEFAULT, STATFLAG_NONAME));

TEST_P(StatusOfTheLogoStream, IsTypeAndSizeAndNothingElse) {
    STATSTG expected;
    std::memset(&expected, 0, sizeof expected);
    expected.type = 2;
    expected.cbSize.QuadPart = Logo().size();
    STATSTG status;
    std::memset(&status, 0xCC, sizeof status);
    EXPECT_EQ(Stream->Stat(&status, GetParam()), S_OK);
    EXPECT_EQ(status.pwcsName, nullptr);
    EXPECT_EQ(status.type, static_cast<DWORD>(STGTY_STREAM));
    EXPECT_EQ(status.cbSize.QuadPart, Logo().size());
    EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(&status), sizeof status),
              std::string_view(reinterpret_cast<const char*>(&expected), sizeof expected));
}

// Clone

namespace {

class CloneOfTheLogoStream : public LogoStream {
protected:
    IStream* Cloned() {
        IStream* clone = nullptr;
        EXPECT_EQ(Stream->Clone(&clone), S_OK);
        return clone;
    }
};

} // namespace

TEST_F(CloneOfTheLogoStream, IsAtTheSamePosition) {
    MoveTo(Stream, 9);
    IStream* const clone = Cloned();
    EXPECT_EQ(PositionOf(clone), 9);
    clone->Release();
}

TEST_F(CloneOfTheLogoStream, ReadsTheSameBytes) {
    IStream* const clone = Cloned();
    EXPECT_EQ(ReadFrom(clone, static_cast<ULONG>(Size) + 1), Logo());
    clone->Release();
}

TEST_F(CloneOfTheLogoStream, MovesForItself) {
    IStream* const clone = Cloned();
    MoveTo(clone, 9);
    EXPECT_EQ(PositionOf(Stream), 0);
    MoveTo(Stream, 20);
    EXPECT_EQ(PositionOf(clone), 9);
    clone->Release();
}

TEST_F(CloneOfTheLogoStream, BeginsWithTheReferencesOfTheOriginal) {
    Stream->AddRef();
    Stream->AddRef();
    IStream* const clone = Cloned();
    EXPECT_EQ(Stream->Release(), 2U);
    EXPECT_EQ(Stream->Release(), 1U);
    ASSERT_EQ(clone->Release(), 2U);
    ASSERT_EQ(clone->Release(), 1U);
    EXPECT_EQ(clone->Release(), 0U);
}

TEST_F(CloneOfTheLogoStream, IsNotCountedAsLive) {
    IStream* const clone = Cloned();
    EXPECT_EQ(LiveObjectCount, LiveBefore + 1);
    clone->Release();
}

TEST_F(CloneOfTheLogoStream, IsRefusedWithoutMemory) {
    static void* (*original)(std::size_t);
    original = ImportedNow<void*(std::size_t)>("malloc");
    const ImportPatch<void*(std::size_t)> allocate(
        "malloc", [](std::size_t size) -> void* { return size == sizeof(ResourceStream) ? nullptr : original(size); });
    IStream* clone = Stream;
    EXPECT_EQ(Stream->Clone(&clone), E_OUTOFMEMORY);
    EXPECT_EQ(clone, nullptr);
}

// What it is not meant for

TEST_F(LogoStream, WriteIsNotImplemented) {
    ULONG written = 77;
    EXPECT_EQ(Stream->Write("x", 1, &written), E_NOTIMPL);
    EXPECT_EQ(written, 77U);
    EXPECT_EQ(PositionOf(Stream), 0);
}

TEST_F(LogoStream, SetSizeIsNotImplemented) {
    EXPECT_EQ(Stream->SetSize(Unsigned(1)), E_NOTIMPL);
    STATSTG status{};
    Stream->Stat(&status, STATFLAG_NONAME);
    EXPECT_EQ(status.cbSize.QuadPart, Logo().size());
}

TEST_F(LogoStream, CommitIsNotImplemented) {
    EXPECT_EQ(Stream->Commit(STGC_DEFAULT), E_NOTIMPL);
}

TEST_F(LogoStream, RevertIsNotImplemented) {
    MoveTo(Stream, 5);
    EXPECT_EQ(Stream->Revert(), E_NOTIMPL);
    EXPECT_EQ(PositionOf(Stream), 5);
}

TEST_F(LogoStream, LockOfARegionSucceedsAndLocksNothing) {
    EXPECT_EQ(Stream->LockRegion(Unsigned(0), Unsigned(4), LOCK_EXCLUSIVE), S_OK);
    EXPECT_EQ(Stream->LockRegion(Unsigned(0), Unsigned(4), LOCK_EXCLUSIVE), S_OK);
    EXPECT_EQ(ReadFrom(Stream, 4), Logo().substr(0, 4));
}

TEST_F(LogoStream, UnlockOfARegionSucceedsWithoutALock) {
    EXPECT_EQ(Stream->UnlockRegion(Unsigned(0), Unsigned(4), LOCK_EXCLUSIVE), S_OK);
}

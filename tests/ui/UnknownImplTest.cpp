#include "ui/UnknownImpl.h"

#include <objidl.h>

#include <array>
#include <atomic>
#include <gtest/gtest.h>
#include <memory>
#include <thread>

namespace {

/// Tells when it goes.
class Thing final : public UnknownImpl<IPersist> {
public:
    explicit Thing(bool& gone) : gone_(&gone) {}
    Thing(const Thing&) = default;
    ~Thing() override { *gone_ = true; }

    HRESULT STDMETHODCALLTYPE GetClassID(CLSID*) override { return E_NOTIMPL; }

private:
    bool* gone_;
};

/// A part of an outer object, which counts for it.
class Part final : public UnknownImpl<IPersist> {
public:
    explicit Part(IUnknown* outer) : outer_(outer) {}

    HRESULT STDMETHODCALLTYPE GetClassID(CLSID*) override { return E_NOTIMPL; }

private:
    IUnknown* ControllingObject() override { return outer_; }

    IUnknown* outer_;
};

class CountedObject : public testing::Test {
protected:
    const LONG LiveBefore = LiveObjectCount;
    bool Gone = false;
    Thing* const Object = new Thing(Gone);
};

} // namespace

TEST_F(CountedObject, BeginsWithItsCreatorsReference) {
    EXPECT_EQ(Object->Release(), 0U);
    EXPECT_TRUE(Gone);
}

TEST_F(CountedObject, TellsTheReferencesThatThereAre) {
    EXPECT_EQ(Object->AddRef(), 2U);
    EXPECT_EQ(Object->AddRef(), 3U);
    EXPECT_EQ(Object->Release(), 2U);
    EXPECT_EQ(Object->Release(), 1U);
    EXPECT_FALSE(Gone);
    Object->Release();
}

TEST_F(CountedObject, IsLiveUntilItsLastReferenceIsReleased) {
    EXPECT_EQ(LiveObjectCount, LiveBefore + 1);
    Object->AddRef();
    Object->Release();
    EXPECT_EQ(LiveObjectCount, LiveBefore + 1);
    Object->Release();
    EXPECT_EQ(LiveObjectCount, LiveBefore);
}

TEST_F(CountedObject, KeepsCountForManyThreads) {
    std::array<std::thread, 4> threads;
    std::atomic<std::size_t> ready = 0; // so that they meet
    for (std::thread& thread : threads) {
        thread = std::thread([this, &ready, &threads] {
            for (++ready; ready != threads.size();)
                std::this_thread::yield();
            for (int i = 0; i < 300000; ++i) {
                Object->AddRef();
                Object->AddRef();
                Object->Release();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(Object->AddRef(), 1200002U);
    delete Object;
}

TEST_F(CountedObject, IsFoundAsWhatItImplements) {
    for (const IID& iid : {IID_IPersist, IID_IUnknown}) {
        void* found = nullptr;
        EXPECT_EQ(Object->QueryInterface(iid, &found), S_OK);
        EXPECT_EQ(found, static_cast<IPersist*>(Object));
        EXPECT_EQ(Object->Release(), 1U);
    }
    Object->Release();
}

TEST_F(CountedObject, IsNotFoundAsAnythingElse) {
    void* found = this;
    EXPECT_EQ(Object->QueryInterface(IID_IPersistStream, &found), E_NOINTERFACE);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(Object->Release(), 0U);
}

TEST_F(CountedObject, HasCopiesThatBeginWithItsReferences) {
    Object->AddRef();
    {
        Thing copy(*Object);
        EXPECT_EQ(copy.AddRef(), 3U);
        EXPECT_EQ(Object->AddRef(), 3U); // each for itself
    }
    delete Object;
    ++LiveObjectCount; // the copy's destructor took one off that was never added
}

TEST_F(CountedObject, HasCopiesThatAreNotLive) {
    {
        const Thing copy(*Object);
        EXPECT_EQ(LiveObjectCount, LiveBefore + 1);
    }
    EXPECT_EQ(LiveObjectCount, LiveBefore);
    delete Object;
    LiveObjectCount = LiveBefore;
}

TEST_F(CountedObject, CountsForItsParts) {
    const auto part = std::make_unique<Part>(Object);
    EXPECT_EQ(part->AddRef(), 2U);
    EXPECT_EQ(Object->AddRef(), 3U);
    EXPECT_EQ(part->Release(), 2U);
    EXPECT_EQ(Object->Release(), 1U);
    EXPECT_EQ(part->Release(), 0U);
    EXPECT_TRUE(Gone);
}

TEST_F(CountedObject, CountsWhoFoundOneOfItsParts) {
    const auto part = std::make_unique<Part>(Object);
    void* found = nullptr;
    EXPECT_EQ(part->QueryInterface(IID_IPersist, &found), S_OK);
    EXPECT_EQ(found, static_cast<IPersist*>(part.get()));
    EXPECT_EQ(Object->Release(), 1U);
    Object->Release();
}

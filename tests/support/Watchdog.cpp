#include "tests/support/Watchdog.h"

#include <windows.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace Watchdog {

namespace {

using Clock = std::chrono::steady_clock;

std::atomic<Clock::time_point> Deadline = Clock::time_point::max();
std::atomic<const char*> WaitingFor = nullptr;

class Listener : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo& /*test*/) override { Allow(60); }
    void OnTestEnd(const testing::TestInfo& /*test*/) override { Deadline = Clock::time_point::max(); }
};

void Watch() {
    while (Clock::now() < Deadline.load())
        SleepEx(200, FALSE); // not Sleep, which tests replace
    const testing::TestInfo* const test = testing::UnitTest::GetInstance()->current_test_info();
    const char* const what = WaitingFor;
    std::fprintf(stderr, "%s.%s hangs, waiting for %s.\n", test != nullptr ? test->test_suite_name() : "",
                 test != nullptr ? test->name() : "", what != nullptr ? what : "nothing known");
    std::fflush(stderr);
    std::_Exit(4);
}

} // namespace

void Start() {
    testing::UnitTest::GetInstance()->listeners().Append(new Listener); // owned by the list
    std::thread(Watch).detach();
}

void Allow(unsigned seconds) {
    Deadline = Clock::now() + std::chrono::seconds(seconds);
}

Waiting::Waiting(const char* what) : outer_(WaitingFor.exchange(what)) {}

Waiting::~Waiting() {
    WaitingFor = outer_;
}

} // namespace Watchdog

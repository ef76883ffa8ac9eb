#pragma once

/// Ends a hung test program and says which test it was and what that waited for.
namespace Watchdog {

/// Watches every test of the program from now on; each may take a minute.
void Start();

/// Gives the running test more time, from now on.
void Allow(unsigned seconds);

/// Names what the code waits for until the object goes: `const Watchdog::Waiting waiting("the front-end's end");`
class Waiting {
public:
    explicit Waiting(const char* what);
    Waiting(const Waiting&) = delete;
    Waiting& operator=(const Waiting&) = delete;
    ~Waiting();

private:
    const char* outer_;
};

} // namespace Watchdog

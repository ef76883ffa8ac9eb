#pragma once

#if defined(__MINGW32__)

/// What a function with an array keeps behind it and compares before it returns: random, so that who writes past the
/// array can't forge it. Another value ends the process as `EndProcessAbnormally` does. Chosen before any constructor
/// runs. Any thread.
extern "C" unsigned long long StackGuard asm("__stack_chk_guard");

/// `StackGuard` before it is chosen: DEFAULT_SECURITY_COOKIE of Microsoft's run-time library. Windows replaces this
/// value, and no other, when the load configuration says where it stands.
inline constexpr unsigned long long UnchosenStackGuard = 0x00002B992DDFA232;

#endif

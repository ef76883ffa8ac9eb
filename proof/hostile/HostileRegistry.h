#pragma once

#include "proof/hostile/Random.h"
#include "proof/hostile/Rules.h"

#include <string>

/// A value of any type and content, most often of a type that the installer reads.
Rules::Value HostileValue(Random& random);

/// The text as a string of the registry: of any of the three types, with its NUL, without it, or with half a character
/// at its end; seldom as a value of another type.
Rules::Value HostileString(Random& random, const std::wstring& text);

/// Puts the values below the root's key in the place of all that stood there. A test failure when it can't.
void Store(HKEY root, const Rules::Registry& registry);

/// As it can be pasted into a test.
std::string Literal(const Rules::Registry& registry);

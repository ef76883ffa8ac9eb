#pragma once

#include "proof/hostile/Random.h"

#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Any UTF-16 code unit, most often one of those that programs stumble over: NUL, line breaks, halves of surrogate
/// pairs, byte-order marks, quotes, backslashes, percent signs.
wchar_t HostileCharacter(Random& random);

/// Such text: mostly short, sometimes empty, seldom of thousands of characters.
std::wstring HostileText(Random& random);

/// Text that is made of these pieces, with some hostile characters among them. Mostly short, seldom hundreds of pieces.
std::wstring TextOf(Random& random, std::span<const std::wstring_view> pieces);

/// The name of a registry key or value: neither empty nor longer than Windows allows, without NUL and backslash.
std::wstring HostileName(Random& random);

/// Bytes of any content and mostly few of them, now and then more than 64 KB.
std::vector<unsigned char> HostileBytes(Random& random);

// As they can be pasted into a test.

std::string Literal(std::wstring_view text);
std::string Literal(std::span<const unsigned char> bytes);

#include "proof/hostile/HostileText.h"

#include <algorithm>
#include <iomanip>
#include <sstream>

namespace {

using namespace std::string_view_literals;

std::size_t HostileLength(Random& random) {
    if (random.OneIn(1000))
        return random.Below(40000);
    return random.OneIn(20) ? random.Below(500) : random.Below(12);
}

} // namespace

wchar_t HostileCharacter(Random& random) {
    static constexpr std::wstring_view Stumbles = L"\0\0\r\n\t\v\f \"'\\/%;:,.&<>|*?{}@#3x86\x7F\x85\xA0\xAD\xDF"
                                                  L"\x130\x131\x200B\x200F\x2028\x202E\x20AC\xD800\xDBFF\xDC00\xDFFF"
                                                  L"\xFEFF\xFFFE\xFFFD\xFFFF"sv;
    switch (random.Below(4)) {
    case 0:
        return random.Pick(Stumbles);
    case 1:
        return static_cast<wchar_t>(random.Below(0x10000));
    default:
        return static_cast<wchar_t>(L' ' + random.Below(95));
    }
}

std::wstring HostileText(Random& random) {
    std::wstring text(HostileLength(random), L'\0');
    if (random.OneIn(10))
        std::ranges::fill(text, HostileCharacter(random));
    else
        std::ranges::generate(text, [&random] { return HostileCharacter(random); });
    return text;
}

std::wstring TextOf(Random& random, std::span<const std::wstring_view> pieces) {
    std::wstring text;
    for (std::size_t left = random.OneIn(500) ? random.Below(600) : random.Below(12); left != 0; --left) {
        if (random.OneIn(8))
            text += HostileCharacter(random);
        else
            text += random.Pick(pieces);
    }
    return text;
}

std::wstring HostileName(Random& random) {
    std::wstring name = HostileText(random).substr(0, 255);
    std::erase_if(name, [](wchar_t character) { return character == L'\0' || character == L'\\'; });
    return name.empty() ? L"x" : name;
}

std::vector<unsigned char> HostileBytes(Random& random) {
    std::size_t size = random.Below(10);
    if (random.OneIn(20))
        size = random.Below(600);
    else if (random.OneIn(1000))
        size = random.Below(200'000);
    std::vector<unsigned char> bytes;
    while (bytes.size() < size)
        bytes.push_back(static_cast<unsigned char>(random.OneIn(3) ? 0 : random.Next()));
    return bytes;
}

std::string Literal(std::wstring_view text) {
    std::ostringstream literal;
    literal << "L\"" << std::setfill('0');
    for (const wchar_t character : text) {
        if (character == L'"' || character == L'\\')
            literal << '\\' << static_cast<char>(character);
        else if (character >= L' ' && character < 0x7F)
            literal << static_cast<char>(character);
        else if (character < 0x80) // octal: of three digits at most, whatever follows
            literal << '\\' << std::oct << std::setw(3) << unsigned{character};
        else
            literal << "\\x" << std::hex << std::setw(4) << unsigned{character} << R"(" L")";
    }
    literal << "\"s";
    return literal.str();
}

std::string Literal(std::span<const unsigned char> bytes) {
    std::string literal = "{";
    for (const unsigned char byte : bytes)
        literal += (literal.size() > 1 ? ", " : "") + std::to_string(byte);
    return literal + "}";
}

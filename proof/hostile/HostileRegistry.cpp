#include "proof/hostile/HostileRegistry.h"

#include "proof/hostile/HostileText.h"
#include "tests/support/Registry.h"

namespace {

constexpr DWORD StringTypes[] = {REG_SZ, REG_SZ, REG_SZ, REG_EXPAND_SZ, REG_MULTI_SZ};
constexpr DWORD ReadTypes[] = {REG_SZ, REG_EXPAND_SZ, REG_DWORD, REG_MULTI_SZ};

DWORD HostileType(Random& random) {
    if (random.OneIn(8))
        return static_cast<DWORD>(random.OneIn(2) ? random.Next() : random.Below(13));
    return random.Pick(ReadTypes);
}

} // namespace

Rules::Value HostileValue(Random& random) {
    return {HostileType(random), HostileBytes(random)};
}

Rules::Value HostileString(Random& random, const std::wstring& text) {
    std::vector<unsigned char> bytes = Bytes(random.OneIn(3) ? text : text + L'\0');
    if (random.OneIn(8))
        bytes.push_back(static_cast<unsigned char>(random.Next()));
    return {random.OneIn(10) ? HostileType(random) : random.Pick(StringTypes), bytes};
}

void Store(HKEY root, const Rules::Registry& registry) {
    EXPECT_EQ(RegDeleteTreeW(root, L""), ERROR_SUCCESS);
    for (const auto& [place, value] : registry)
        SetValueOf(root, place.key.c_str(), place.name.c_str(), value.type, value.bytes);
}

std::string Literal(const Rules::Registry& registry) {
    std::string text;
    for (const auto& [place, value] : registry)
        text += "    {{" + Literal(place.key) + ", " + Literal(place.name) + "}, {" + std::to_string(value.type) +
                ", " + Literal(value.bytes) + "}},\n";
    return text;
}

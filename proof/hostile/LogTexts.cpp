#include "core/Log.h"
#include "proof/hostile/HostileText.h"
#include "proof/hostile/Inputs.h"
#include "proof/hostile/LogTail.h"
#include "proof/hostile/Rules.h"

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <thread>
#include <tuple>
#include <variant>
#include <vector>

namespace {

/// One insertion: a text or a number, which begins an entry or continues one.
struct Insertion {
    bool begins;
    std::variant<std::wstring, unsigned> content;
};

Insertion HostileInsertion(Random& random) {
    const bool begins = random.OneIn(2);
    if (random.OneIn(8))
        return {begins, static_cast<unsigned>(random.Next())};
    return {begins, HostileText(random)};
}

std::wstring TextOf(const Insertion& insertion) {
    const auto* const text = std::get_if<std::wstring>(&insertion.content);
    return text != nullptr ? *text : std::to_wstring(std::get<unsigned>(insertion.content));
}

void Insert(const Insertion& insertion) {
    std::wostream& log = Log(insertion.begins);
    std::visit([&log](const auto& content) { log << content; }, insertion.content);
}

/// What one thread writes, in pieces that stay whole: a timestamp stands as an empty one.
std::vector<std::wstring> PiecesOf(const std::vector<Insertion>& insertions) {
    std::vector<std::wstring> pieces;
    for (const Insertion& insertion : insertions) {
        if (insertion.begins)
            pieces.insert(pieces.end(), {L"\r\n", L"", L" - "});
        if (const std::wstring text = TextOf(insertion); !text.empty())
            pieces.push_back(text);
    }
    return pieces;
}

/// The length of the piece if the log goes on with it; 0 otherwise.
std::size_t LengthIn(std::wstring_view log, const std::wstring& piece, std::time_t from, std::time_t to) {
    if (!piece.empty())
        return log.starts_with(piece) ? piece.size() : 0;
    return Rules::IsTimestamp(log.substr(0, Rules::TimestampLength), from, to) ? Rules::TimestampLength : 0;
}

/// True when the log consists of the pieces of both threads, each whole and those of a thread in order. Follows every
/// way to read it, since pieces of both may look alike.
bool Consists(std::wstring_view log, const std::array<std::vector<std::wstring>, 2>& pieces, std::time_t from,
              std::time_t to) {
    struct Reading {
        std::size_t place;
        std::array<std::size_t, 2> taken;
        bool operator<(const Reading& other) const {
            return std::tie(place, taken) < std::tie(other.place, other.taken);
        }
    };
    std::set<Reading> readings{{0, {0, 0}}}; // the one that has come least far is the first
    while (!readings.empty()) {
        const Reading reading = *readings.begin();
        readings.erase(readings.begin());
        const std::wstring_view left = log.substr(reading.place);
        if (left.empty())
            return reading.taken == std::array{pieces[0].size(), pieces[1].size()};
        for (const std::size_t thread : {0U, 1U}) {
            if (reading.taken.at(thread) == pieces.at(thread).size())
                continue;
            const std::size_t length = LengthIn(left, pieces.at(thread)[reading.taken.at(thread)], from, to);
            Reading next = reading;
            next.place += length;
            ++next.taken.at(thread);
            if (length != 0)
                readings.insert(next);
        }
    }
    return false;
}

} // namespace

// An input is what two threads write at the same time: two hundred insertions.
TEST(HostileLogTexts, OfTwoThreadsStayWhole) {
    LogTail log;
    ForEachInput({.sample = 100, .whole = 1'000}, [&log](Random& random) {
        std::array<std::vector<Insertion>, 2> insertions;
        for (std::vector<Insertion>& ofThread : insertions)
            std::generate_n(std::back_inserter(ofThread), 100, [&random] { return HostileInsertion(random); });
        const std::time_t from = std::time(nullptr);
        std::thread other([&insertions] { std::ranges::for_each(insertions[1], Insert); });
        std::ranges::for_each(insertions[0], Insert);
        other.join();
        const std::wstring written = log.Next();
        if (!Consists(written, {PiecesOf(insertions[0]), PiecesOf(insertions[1])}, from, std::time(nullptr)))
            ADD_FAILURE() << "written: " << Literal(written);
    });
}

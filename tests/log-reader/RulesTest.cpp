// The log reader's rules and docs/log.md say the same.

#include "support/Rules.h"

#include "core/LanguageTable.h"
#include "support/Output.h"
#include "tests/support/LogDocument.h"
#include "tests/support/TestFolder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <regex>
#include <set>

namespace {

using Row = std::vector<std::wstring>;

Row Cells(const std::wstring& line) {
    Row cells;
    static const std::wregex Cell(LR"(\| ([^|]*) (?=\|))");
    for (std::wsregex_iterator cell(line.begin(), line.end(), Cell); cell != std::wsregex_iterator(); ++cell)
        cells.push_back((*cell)[1]);
    return cells;
}

/// The rows of all tables of docs/log.md that have this header.
std::vector<Row> TableRows(const std::wstring& header) {
    std::vector<Row> rows;
    bool inTable = false;
    for (const std::wstring& line : ReadLines(ProgramFolder() / "log.md")) {
        if (line == header)
            inTable = true;
        else if (!line.starts_with(L"|"))
            inTable = false;
        else if (inTable && !line.starts_with(L"|-"))
            rows.push_back(Cells(line));
    }
    return rows;
}

/// What stands between grave accents, in order.
std::vector<std::wstring> Quotes(const std::wstring& cell) {
    std::vector<std::wstring> quotes;
    static const std::wregex Quote(L"`([^`]*)`");
    for (std::wsregex_iterator quote(cell.begin(), cell.end(), Quote); quote != std::wsregex_iterator(); ++quote)
        quotes.push_back((*quote)[1]);
    return quotes;
}

/// A test failure when there is none.
std::vector<const LogRule*> RulesOf(const std::wstring& text) {
    std::vector<const LogRule*> rules;
    for (const LogRule& rule : LogRules()) {
        if (rule.text == text)
            rules.push_back(&rule);
    }
    EXPECT_FALSE(rules.empty()) << testing::PrintToString(text);
    return rules;
}

void ExpectErrors(const std::vector<Row>& rows, std::size_t from, std::size_t to, std::span<const ErrorCode> errors) {
    std::set<const ErrorCode*> explained;
    static const std::wregex Code(L"0x[0-9a-f]+");
    for (std::size_t index = from; index < to; ++index) {
        const Row& row = rows[index];
        for (std::wsregex_iterator code(row[0].begin(), row[0].end(), Code); code != std::wsregex_iterator(); ++code) {
            const ErrorCode* const error =
                FindError(errors, static_cast<std::uint32_t>(std::stoul(code->str(), nullptr, 16)));
            ASSERT_NE(error, nullptr) << testing::PrintToString(row[0]);
            EXPECT_EQ(error->meaning, row[1]);
            EXPECT_EQ(error->advice, row[2]);
            explained.insert(error);
        }
    }
    EXPECT_EQ(explained.size(), errors.size()) << "a code that the document doesn't have";
}

} // namespace

TEST(LogRules, AreTheEntriesThatTheDocumentQuotes) {
    std::vector<std::wstring> quoted;
    for (const QuotedEntry& quote : QuotedEntries())
        quoted.push_back(quote.text);
    std::vector<std::wstring> known;
    for (const LogRule& rule : LogRules()) {
        if (rule.says != Says::PassBegins) // which reads as the rule before it
            known.emplace_back(rule.text);
    }
    EXPECT_EQ(known, quoted);
}

TEST(LogRules, HaveARuleForEachThingThatAnEntryMaySay) {
    std::set<Says> said;
    for (const LogRule& rule : LogRules())
        said.insert(rule.says);
    EXPECT_EQ(said.size(), static_cast<std::size_t>(Says::Ended) + 1);
    EXPECT_LE(said.size(), 64U) << "as many as a set has bits";
}

TEST(LogRules, GiveTheVerdictsOfTheDocument) {
    std::size_t verdict = 0;
    for (const Row& row : TableRows(L"| Result | Verdict | Exit code |"))
        EXPECT_EQ(Quotes(row.at(1)).at(0), std::wstring(VerdictName(static_cast<Verdict>(verdict++))));
    EXPECT_EQ(verdict, static_cast<std::size_t>(Verdict::Unreadable) + 1);
}

TEST(LogRules, NameTheStepAtWhichALogEndsAsTheDocumentDoes) {
    std::set<std::wstring> steps;
    for (const Row& row : TableRows(L"| The log ends with | Step | The installer was |")) {
        ASSERT_EQ(row.size(), 3U);
        const std::wstring name = Quotes(row[1]).at(0);
        const auto step = std::ranges::find(StepTexts(), name, &StepText::name);
        ASSERT_NE(step, StepTexts().end()) << testing::PrintToString(name);
        EXPECT_EQ(step->sentence, row[2]);
        steps.insert(name);
        if (step->step == RunStep::Question)
            continue; // not the rule decides that, but the whole report: see LogReadingTest.cpp
        for (const std::wstring& quote : Quotes(row[0])) {
            for (const LogRule* const rule : RulesOf(quote))
                EXPECT_EQ(StepTexts()[static_cast<std::size_t>(rule->next)].name, name)
                    << testing::PrintToString(quote);
        }
    }
    EXPECT_EQ(steps.size(), static_cast<std::size_t>(RunStep::Protocols) + 1) << "those behind it are no failure";
}

TEST(LogRules, NameWhatFailedAsTheDocumentDoes) {
    const std::vector<Row> rows = TableRows(L"| Right behind | Failed |");
    ASSERT_EQ(rows.size(), Causes().size());
    for (const Row& row : rows) {
        const auto cause = std::ranges::find(Causes(), row[1], &Cause::sentence);
        ASSERT_NE(cause, Causes().end()) << testing::PrintToString(row[1]);
        for (const std::wstring& quote : Quotes(row[0])) {
            const bool isExplained = std::ranges::any_of(RulesOf(quote), [&cause](const LogRule* rule) {
                return cause->behind.Contains(rule->says) ||
                       (rule->says == Says::Settings && cause->behind.Contains(Says::SettingsEnd));
            });
            EXPECT_TRUE(isExplained) << testing::PrintToString(quote);
        }
    }
}

TEST(LogRules, ExplainErrorsAsTheDocumentDoes) {
    const std::vector<Row> rows = TableRows(L"| Code | Meaning | What to do |");
    const auto oneNote = std::ranges::find(rows, L"0x80040154", [](const Row& row) { return row[0]; });
    ASSERT_NE(oneNote, rows.end());
    const auto first = static_cast<std::size_t>(oneNote - rows.begin());
    ExpectErrors(rows, 0, first, InstallationErrors());
    ExpectErrors(rows, first, rows.size(), OneNoteErrors());
    EXPECT_EQ(FindError(InstallationErrors(), 0x80004005), nullptr);
}

TEST(LogRules, RecogniseAFailureInEveryLanguage) {
    for (const LanguageRow& language : LanguageTable) {
        const std::wstring entry = std::wstring(L"ERROR: ") + language.texts[StrInstallFailed] + L"\n\nx (0x5)";
        EXPECT_EQ(std::wstring(FailureLanguage(entry)), std::wstring(language.code));
    }
    EXPECT_TRUE(FailureLanguage(L"ERROR: Installation faile\n\nx (0x5)").empty());
    EXPECT_TRUE(FailureLanguage(L"Installation failed:\n\nx (0x5)").empty());
}

#include "proof/faults/Document.h"

#include <array>
#include <string_view>

namespace {

/// Runs that show what no other run may show, because what the installer does there is as it shall be.
struct Known {
    std::string_view function;
    std::string_view surprise;
    const char* explanation;
};

constexpr char NoWindow[] =
    "Without a window there is nothing to do: the log ends with the report, the process with 0.";

constexpr std::array Explanations{
    Known{"CreateEventW", "half done without a word", NoWindow},
    Known{"CreateWindowExW", "half done without a word", NoWindow},
    Known{"RegisterClassExW", "half done without a word", NoWindow},
    Known{"QueueUserWorkItem", "does not end",
          "Nothing can take the worker's place: the window stays, and the process when it is closed."},
    Known{"SetEvent", "does not end",
          "Only an event that is none can't be set, and then nothing ends the wait for it, which has no limit."},
    Known{"CloseHandle", "dialog #32770 Error",
          "A payload that was written and not closed can't be started: the shell says so in a box."},
    Known{"WriteFile", "dialog #32770 Error",
          "Errors of writing the payload are not checked, and the shell shows a box for what is no program."},
};

} // namespace

std::string Explanation(const Result& result) {
    for (const Known& known : Explanations) {
        if (known.function == result.function && known.surprise == result.surprises)
            return known.explanation;
    }
    return {};
}

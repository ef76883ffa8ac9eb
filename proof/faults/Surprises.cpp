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

constexpr std::array Explanations{
    Known{"CommandLineToArgvW", "dialog WC_VELLUMKIT_INSTALLER Vellumkit",
          "Without the list of arguments there is no option: the installation has a window."},
    Known{"QueueUserWorkItem", "does not end",
          "Nothing can take the worker's place: the window stays, and the process when it is closed."},
    Known{"SetEvent", "does not end",
          "Only an event that is none can't be set, and then nothing ends the wait for it, which has no limit."},
    Known{"WaitForSingleObject", "an installation that nobody asked for",
          "Only an event that is none can't be waited for, and a wait for the user that ends is Retry."},
    Known{"malloc", "exit code",
          "Before anything of the program runs, the compiler's start-up code takes memory without a look at it."},
    Known{"_write", "dialog #32770 Error",
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

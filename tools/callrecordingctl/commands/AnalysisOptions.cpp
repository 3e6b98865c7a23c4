// Adds the options that the analysing commands share.

#include "commands/AnalysisOptions.h"

#include <fmt/format.h>

namespace callrecordingctl {

void AddAnalysis(CLI::App& command, CallKind& calls, std::size_t& memory) {
    AddText(
        command, "--calls", "typed|parties",
        "Calls as the library is asked about them, each\n"
        "side with a type (the default), or as decide\n"
        "and replay read them from addresses",
        [&calls](std::string const& text) {
            if (text != "typed" && text != "parties")
                throw CLI::ValidationError("--calls",
                                           fmt::format("\"{}\" is not typed or parties", text));
            calls = text == "typed" ? CallKind::Typed : CallKind::Parties;
        });
    AddNumber(command, "--memory", "MIB",
              "Memory to use before the answer is \"undecided\"\n(default: 256)", 1,
              [&memory](std::uint32_t mebibytes) { memory = std::size_t{mebibytes} << 20; });
}

char const* CallsName(CallKind calls) {
    return calls == CallKind::Typed ? "typed" : "parties";
}

CallKind OtherThan(CallKind calls) {
    return calls == CallKind::Typed ? CallKind::Parties : CallKind::Typed;
}

} // namespace callrecordingctl

#pragma once

#include <optional>

class PairRunner;

/// The start of the program with a large library, from the call of the program to the moment at which the window is
/// painted, thumbnails included, and the event loop has nothing left to do.
namespace ProgramStart {

/// When the benchmark program was called again to be the one that starts: what main() returns.
[[nodiscard]] std::optional<int> runAsChild(int argc, char **argv);

void measure(PairRunner &runner);

}

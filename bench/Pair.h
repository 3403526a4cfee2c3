#pragma once

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <functional>
#include <string>

/// One measure: what we do and what a public tool does with the same input, timed in turns in the same run.
///
/// To add a program, write bench/<name>.cpp with a main() like this one, add `tamsel_bench(<name> LINKS …)` to
/// bench/CMakeLists.txt, and run it with `scripts/bench <name>`:
///
///     int main(int argc, char **argv)
///     {
///         PairRunner runner(argc, argv);
///         const QByteArray text = …; // made once, not timed
///         runner.run({.name = "read",
///                     .ours = [&] { benchmark::DoNotOptimize(readOurs(text)); },
///                     .peerName = "QXmlStreamReader",
///                     .peer = [&] { benchmark::DoNotOptimize(readTheirs(text)); },
///                     .bytes = text.size()});
///         return runner.result();
///     }
struct Pair
{
    std::string name; ///< the first column; begins with the word that the measure is known by
    std::function<void()> ours;
    std::string peerName = {};
    std::function<void()> peer = {};    ///< empty where there is nothing to compare with: the line then shows "-"
    long bytes = 0;                     ///< when given, the line also tells MB/s
    int repetitions = 7;                ///< of each side; the median counts
    std::function<void()> prepare = {}; ///< runs before every single call of either side, not timed
};

/// Runs pairs through Google Benchmark and prints one line for each on standard output:
///
///     name | ours | peer (which) | ratio
///
/// The ratio is one of speed: above 1 we are the faster. As long as it lives, the home folder and the XDG folders are
/// temporary ones, so that no measure touches the user's library; make it before anything else in main().
/// Google Benchmark's own options work; --benchmark_filter=<name> picks measures.
class PairRunner
{
public:
    PairRunner(int argc, char **argv);
    ~PairRunner();
    PairRunner(const PairRunner &) = delete;
    PairRunner &operator=(const PairRunner &) = delete;

    void run(const Pair &pair);
    /// For a measure that failed (a wrong answer, a tool that does not start): told on standard error.
    void fail(const std::string &reason);
    /// What main() returns.
    [[nodiscard]] int result() const { return m_failures == 0 ? 0 : 1; }
    /// A folder for files that measures need.
    [[nodiscard]] QString folder() const { return m_folder.path(); }

private:
    QTemporaryDir m_folder;
    int m_failures = 0;
};

#include "Pair.h"

#include <QDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <map>
#include <vector>

PairRunner::PairRunner(int argc, char **argv)
{
    for (const char *name : {"HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"}) {
        const QString path = m_folder.filePath(QString::fromLatin1(name));
        QDir().mkpath(path);
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        qputenv(name, path.toUtf8());
    }
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    benchmark::Initialize(&argc, argv);
}

PairRunner::~PairRunner()
{
    benchmark::Shutdown();
}

namespace {

/// Keeps the time of each repetition instead of printing it.
class Collector : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context &) override { return true; }

    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &run : runs)
            if (run.run_type == Run::RT_Iteration && !run.error_occurred)
                m_seconds[run.run_name.function_name].push_back(run.real_accumulated_time /
                                                                static_cast<double>(run.iterations));
    }

    /// 0 when it did not run.
    double median(const std::string &name)
    {
        std::vector<double> &times = m_seconds[name];
        if (times.empty())
            return 0;
        const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
        std::nth_element(times.begin(), middle, times.end());
        return *middle;
    }

private:
    std::map<std::string, std::vector<double>> m_seconds;
};

void registerSide(const std::string &name, const std::function<void()> &side, const std::function<void()> &prepare)
{
    using Clock = std::chrono::steady_clock;
    const auto loop = [side, prepare](benchmark::State &state) {
        for ([[maybe_unused]] auto turn : state) {
            if (prepare)
                prepare();
            const Clock::time_point start = Clock::now();
            side();
            state.SetIterationTime(std::chrono::duration<double>(Clock::now() - start).count());
        }
    };
    benchmark::RegisterBenchmark(name.c_str(), loop)->UseManualTime();
}

std::string timeText(double seconds, long bytes)
{
    const auto [factor, unit] = seconds >= 1       ? std::pair(1.0, "s")
                                : seconds >= 0.001 ? std::pair(1e3, "ms")
                                                   : std::pair(1e6, "µs");
    char text[64];
    std::snprintf(text, sizeof text, "%.4g %s", seconds * factor, unit);
    std::string result = text;
    if (bytes > 0) {
        std::snprintf(text, sizeof text, ", %.0f MB/s", static_cast<double>(bytes) / seconds / 1e6);
        result += text;
    }
    return result;
}

}

void PairRunner::run(const Pair &pair)
{
    registerSide("ours " + pair.name, pair.ours, pair.prepare);
    if (pair.peer)
        registerSide("peer " + pair.name, pair.peer, pair.prepare);
    Collector collector;
    for (int repetition = 0; repetition < pair.repetitions; ++repetition)
        benchmark::RunSpecifiedBenchmarks(&collector);
    benchmark::ClearRegisteredBenchmarks();

    const double ours = collector.median("ours " + pair.name);
    const double peer = collector.median("peer " + pair.name);
    if (ours <= 0)
        return; // not picked by the filter
    const std::string left = pair.name + " | " + timeText(ours, pair.bytes);
    if (peer > 0)
        std::printf("%s | %s (%s) | %.2f\n", left.c_str(), timeText(peer, pair.bytes).c_str(), pair.peerName.c_str(),
                    peer / ours);
    else
        std::printf("%s | - | -\n", left.c_str());
    std::fflush(stdout);
}

void PairRunner::fail(const std::string &reason)
{
    std::fprintf(stderr, "bench: %s\n", reason.c_str());
    ++m_failures;
}

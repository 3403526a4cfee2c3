#include "FilterLibrary.h"
#include "OpenCvEffects.h"
#include "Pair.h"
#include "PeakMemory.h"
#include "SamplePhoto.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>

#include <cstdio>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace OpenCvEffects;

constexpr QSize kPhotoSize(6000, 4000);
constexpr QSize kPreviewSize(1200, 800);

const FilterLibrary &filters()
{
    static const FilterLibrary library;
    return library;
}

EffectEntry effect(const char *filter, const std::vector<std::pair<const char *, EffectValue>> &values = {})
{
    EffectEntry entry(QString::fromLatin1(filter));
    for (const auto &[input, value] : values)
        entry.setValue(QString::fromLatin1(input), value);
    return entry;
}

/// One effect in all libraries.
struct Work
{
    std::string name;
    EffectChain chain;
    void (Photo::*openCv)() const = nullptr; ///< null where it has no equivalent
    QStringList magick = {};                 ///< ImageMagick's options, likewise
};

std::vector<Work> allWork()
{
    const EffectEntry blur = effect("CIGaussianBlur", {{"inputRadius", kBlurRadius}});
    const EffectEntry colors =
        effect("CIColorControls",
               {{"inputSaturation", kSaturation}, {"inputBrightness", kBrightness}, {"inputContrast", kContrast}});
    const EffectEntry sharpen =
        effect("CIUnsharpMask", {{"inputRadius", kSharpenRadius}, {"inputIntensity", kSharpenIntensity}});
    const EffectEntry sepia = effect("CISepiaTone", {{"inputIntensity", 1.0}});
    const EffectEntry bump = effect(
        "CIBumpDistortion", {{"inputCenter", QPointF(0, 0)}, {"inputRadius", kBumpRadius}, {"inputScale", kBumpScale}});
    const QStringList blurOptions{QStringLiteral("-blur"), QStringLiteral("0x10")};
    const QStringList colorOptions{QStringLiteral("-color-matrix"),
                                   QStringLiteral("1.48 -0.257 -0.026 0 0 -0.05 -0.077 1.303 -0.026 0 0 -0.05 "
                                                  "-0.077 -0.257 1.534 0 0 -0.05 0 0 0 1 0 0 0 0 0 0 1 0 0 0 0 0 0 1")};
    const QStringList sharpenOptions{QStringLiteral("-unsharp"), QStringLiteral("0x2.5+0.5+0")};
    const QStringList sepiaOptions{QStringLiteral("-color-matrix"),
                                   QStringLiteral("0.393 0.769 0.189 0.349 0.686 0.168 0.272 0.534 0.131")};
    return {{"blur", {blur}, &Photo::blur, blurOptions},
            {"colour controls", {colors}, &Photo::colorControls, colorOptions},
            {"unsharp mask", {sharpen}, &Photo::unsharpMask, sharpenOptions},
            {"sepia", {sepia}, &Photo::sepia, sepiaOptions},
            {"bump", {bump}, &Photo::bump, {QStringLiteral("-implode"), QStringLiteral("-0.5")}},
            {"chain",
             {blur, colors, sharpen, sepia},
             &Photo::chain,
             blurOptions + colorOptions + sharpenOptions + sepiaOptions},
            {"crystallize", {effect("CICrystallize", {{"inputRadius", 20.0}, {"inputCenter", QPointF(0, 0)}})}}};
}

void render(PairRunner &runner, const EffectChain &chain, const QImage &photo, double scale = 1)
{
    FilterContext context;
    context.scale = scale;
    const auto result = EvaluateChain(chain, photo, filters(), context);
    if (!result || result->size() != photo.size())
        runner.fail("an effect yielded no picture");
}

/// What a process of its own has in memory at most during `work`, its input and its result among that.
template<typename Prepare, typename Run>
double peakOf(Prepare prepare, Run run)
{
    int ends[2];
    if (pipe(ends) != 0)
        return 0;
    double peak = 0;
    const pid_t child = fork();
    if (child == 0) {
        const auto input = prepare();
        clearPeak();
        run(*input);
        peak = peakMegabytes();
        _exit(write(ends[1], &peak, sizeof peak) == sizeof peak ? 0 : 1);
    }
    close(ends[1]);
    if (child < 0 || read(ends[0], &peak, sizeof peak) != sizeof peak)
        peak = 0;
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return peak;
}

/// Works from a picture in its own format, mapped into memory, and throws the result away.
class Magick
{
public:
    Magick(PairRunner &runner, QImage photo)
        : m_runner(runner)
        , m_path(runner.folder() + QStringLiteral("/photo.mpc"))
    {
        // The limits of the system's policy would make it work on the disk.
        const QString folder = runner.folder() + QStringLiteral("/magick");
        QDir().mkpath(folder);
        QFile policy(folder + QStringLiteral("/policy.xml"));
        if (!policy.open(QFile::WriteOnly) ||
            policy.write("<policymap><policy domain=\"resource\" name=\"memory\" value=\"8GiB\"/></policymap>") < 0)
            runner.fail("no policy for ImageMagick");
        policy.close();
        qputenv("MAGICK_CONFIGURE_PATH", QFile::encodeName(folder));
        const QString plain = runner.folder() + QStringLiteral("/photo.ppm");
        if (!photo.save(plain))
            runner.fail("the photo could not be written");
        run({plain}, m_path);
    }
    /// Returns the most memory in MB.
    double work(const QStringList &options) { return run(QStringList(m_path) + options, QStringLiteral("null:")); }

private:
    double run(const QStringList &arguments, const QString &target)
    {
        QProcess process;
        process.start(QStringLiteral("convert"), arguments + QStringList(target));
        double peak = 0;
        while (!process.waitForFinished(50) && process.state() != QProcess::NotRunning)
            peak = std::max(peak, peakMegabytes(QString::number(process.processId())));
        if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
            m_runner.fail("ImageMagick: " + process.readAllStandardError().toStdString());
        return peak;
    }

    PairRunner &m_runner;
    QString m_path;
};

bool isPicked(const std::string &name)
{
    return QString::fromStdString(name).contains(
        QRegularExpression(QString::fromStdString(benchmark::GetBenchmarkFilter())));
}

void printPeaks(const std::string &name, double ours, double theirs, const char *peer)
{
    if (theirs > 0)
        std::printf("%s, peak MB | %.0f | %.0f (%s) | %.2f\n", name.c_str(), ours, theirs, peer, theirs / ours);
    else
        std::printf("%s, peak MB | %.0f | - | -\n", name.c_str(), ours);
    std::fflush(stdout);
}

/// In processes that are forked while this one has no threads.
void measureMemory(PairRunner &runner, QImage &photo)
{
    for (const Work &work : allWork()) {
        const std::string name = (work.openCv ? "opencv " : "") + work.name;
        if (!isPicked(name + ", peak MB"))
            continue;
        const double ours =
            peakOf([&] { return &photo; }, [&](const QImage &pixels) { render(runner, work.chain, pixels); });
        const auto asTheirs = [&] {
            auto theirs = std::make_unique<Photo>(photo);
            photo = QImage();
            return theirs;
        };
        const double theirs = work.openCv ? peakOf(asTheirs, [&](const Photo &pixels) { (pixels.*work.openCv)(); }) : 0;
        printPeaks(name, ours, theirs, "OpenCV");
    }
}

void measureTime(PairRunner &runner, const QImage &photo)
{
    const Photo theirs(photo);
    for (const Work &work : allWork()) {
        Pair pair{.name = work.name, .ours = [&] { render(runner, work.chain, photo); }};
        if (work.openCv) {
            pair.name = "opencv " + work.name;
            pair.peerName = "OpenCV";
            pair.peer = [&] { (theirs.*work.openCv)(); };
        }
        runner.run(pair);
    }
}

void measureMagick(PairRunner &runner, const QImage &photo)
{
    Magick magick(runner, photo);
    for (const Work &work : allWork()) {
        const std::string name = "imagemagick " + work.name;
        if (work.magick.isEmpty() || !isPicked(name))
            continue;
        double peak = 0;
        runner.run({.name = name,
                    .ours = [&] { render(runner, work.chain, photo); },
                    .peerName = "ImageMagick",
                    .peer = [&] { peak = std::max(peak, magick.work(work.magick)); },
                    .repetitions = 3});
        std::printf("%s, its peak MB | - | %.0f (ImageMagick) | -\n", name.c_str(), peak);
    }
}

/// At the size at which a dialog shows the photo.
void measurePreviews(PairRunner &runner, const QImage &photo)
{
    const QImage small = photo.scaled(kPreviewSize, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const double scale = double(kPreviewSize.width()) / kPhotoSize.width();
    std::vector<Work> previews = allWork();
    for (const char *name : {"CIBoxBlur", "CIDiscBlur", "CIMotionBlur", "CIZoomBlur", "CIBokehBlur", "CINoiseReduction",
                             "CIExposureAdjust", "CIHueAdjust", "CIVibrance", "CIPhotoEffectInstant", "CIBloom",
                             "CIVignette", "CIHighlightShadowAdjust", "CISharpenLuminance"}) {
        EffectEntry entry(QString::fromLatin1(name));
        for (const FilterInput &input : filters().attributes(entry.filterName())->inputs) {
            if (input.sliderMinimum && input.sliderMaximum) // away from what changes nothing
                entry.setValue(input.name, *input.sliderMinimum * 0.3 + *input.sliderMaximum * 0.7);
        }
        previews.push_back({std::string(name + 2), {entry}});
    }
    for (const Work &work : previews)
        runner.run({.name = "preview, " + work.name, .ours = [&] { render(runner, work.chain, small, scale); }});
}

}

int main(int argc, char **argv)
{
    PairRunner runner(argc, argv);
    QImage photo = samplePhoto(kPhotoSize);
    measureMemory(runner, photo);
    measureTime(runner, photo);
    measureMagick(runner, photo);
    measurePreviews(runner, photo);
    return runner.result();
}

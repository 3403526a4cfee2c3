#pragma once

#include "PhotoFinder.h"
#include "SearchRun.h"

#include <QObject>

#include <optional>

/// Finds while somebody types: shows the first match after the photos that were selected when the typing began, and
/// tells how many there are. More letters, and fewer, look from the same place on, so that the photo found may stay.
/// Main thread.
class TypedSearch final : public QObject
{
    Q_OBJECT

public:
    /// `finder` outlives it.
    explicit TypedSearch(PhotoFinder &finder, QObject *parent = nullptr);

    /// Finds what is typed now, a moment later if nothing else is typed until then. The criteria become current.
    void type(const QString &text, const FindCriteria &criteria);
    /// Finds what was typed, at once. What typing has found is found, as long as it is selected; a text that was
    /// accepted before is found after the selected photos.
    PhotoFinder::Outcome accept(const QString &text, const FindCriteria &criteria);
    /// Lets off. What was found stays.
    void stop() { m_run.stop(); }
    [[nodiscard]] bool isRunning() const { return m_run.isRunning(); }
    /// What is typed next is looked for after the photos that are selected then.
    void forget();

Q_SIGNALS:
    /// How many photos match from the place on where it began.
    void ended(qint64 matches);

private:
    /// A place that keeps no folder which is deleted.
    struct Spot
    {
        QString folder; ///< its guid; empty for the library's first photo
        qsizetype photo = 0;
        friend bool operator==(const Spot &, const Spot &) = default;
    };
    [[nodiscard]] Spot behindSelection() const;
    [[nodiscard]] PhotoWalk::Place start() const;
    void look(const FindCriteria &criteria);
    void show(const PhotoWalk::Place &place);

    PhotoFinder &m_finder;
    SearchRun m_run;
    QString m_text;
    bool m_isTyped = false; ///< the text was not accepted yet
    bool m_isShown = false; ///< its first match is
    Spot m_start;
    std::optional<Spot> m_left; ///< behind what was selected when it last had a look; nothing: it begins anew
};

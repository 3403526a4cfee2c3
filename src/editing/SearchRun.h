#pragma once

#include "PhotoSearch.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>
#include <optional>

/// Runs searches on the main thread in slices too short to be felt, a moment after they were asked for: while somebody
/// types, only the last one runs.
class SearchRun final : public QObject
{
    Q_OBJECT

public:
    static constexpr std::chrono::milliseconds kSlice{8};

    explicit SearchRun(QObject *parent = nullptr, std::chrono::milliseconds slice = kSlice);

    /// Makes the search when its time has come.
    using MakeSearch = std::function<PhotoSearch()>;
    /// In place of what was asked for before.
    void start(const MakeSearch &makeSearch);
    void stop();
    [[nodiscard]] bool isRunning() const { return m_timer.isActive(); }

Q_SIGNALS:
    /// Before the search goes on.
    void foundFirst(const PhotoWalk::Place &place);
    void ended(qint64 matches);

private:
    void goOn();

    const std::chrono::milliseconds m_slice;
    QTimer m_timer;
    MakeSearch m_makeSearch; ///< null: it was made
    std::optional<PhotoSearch> m_search;
    qint64 m_matches = 0;
};

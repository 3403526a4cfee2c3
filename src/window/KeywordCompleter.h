#pragma once

#include <QObject>

class KeywordVocabulary;
class QCompleter;
class QKeyEvent;
class QStringListModel;
class QWidget;

/// Offers the library's keywords under a field while one is typed into it. The arrow keys choose, Enter and Tab take
/// what is chosen, Esc closes the list; while nothing is chosen they do what they do without the list.
class KeywordCompleter final : public QObject
{
    Q_OBJECT

public:
    /// `field`, the parent, is one that text is typed into. `vocabulary` outlives it.
    KeywordCompleter(const KeywordVocabulary &vocabulary, QWidget &field);

    /// To be called when the user has changed the text.
    void offer();

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    [[nodiscard]] bool takeKey(QKeyEvent &event);
    void take(const QString &keyword);
    void showUnder(qsizetype typedLength);
    [[nodiscard]] QString text() const;
    [[nodiscard]] int cursor() const;

    const KeywordVocabulary &m_vocabulary;
    QWidget &m_field;
    QStringListModel *m_candidates;
    QCompleter *m_list;
    bool m_isTaking = false;
};

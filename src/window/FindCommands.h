#pragma once

#include "PhotoFinder.h"
#include "QuickSearchField.h"

#include <QObject>

class LibraryActions;
class LibraryEditor;
class PIDetailController;
class QWidget;
class TypedSearch;
class UserDefaults;
struct CommandState;

/// The commands that find photos, and the quick search, which finds while somebody types.
class FindCommands final : public QObject
{
    Q_OBJECT

public:
    /// Lets the actions run the commands, and puts the quick search under the large photo. All outlive it; `window`
    /// becomes its parent. Photos found are shown in `grid`, which takes the focus.
    FindCommands(LibraryEditor &editor, UserDefaults &defaults, LibraryActions &actions, QWidget &grid,
                 PIDetailController &detail, QWidget &window);

    /// Tells what the commands would act on.
    void describe(CommandState &state) const;
    /// Whether the widget is where somebody types what to find.
    [[nodiscard]] bool isQuickSearch(const QWidget *widget) const { return widget == m_field; }
    /// Finds the text after the selected photos, as the option tells; nothing when it is empty.
    void quickSearch(const QString &text);
    /// How the quick search means its text from now on.
    void setSearchOption(QuickSearchField::Option option);

Q_SIGNALS:
    /// The commands may mean something else now.
    void changed();
    /// Something for the status bar; empty to take it back.
    void told(const QString &text);
    /// The quick search is to be seen.
    void quickSearchWanted();

private:
    void bind(LibraryActions &actions);
    void findSheetFinished();
    void showOutcome(PhotoFinder::Outcome outcome);
    void searchWhatIsTyped(const QString &text);
    void tellMatches(qint64 matches);
    [[nodiscard]] QuickSearchField::Option option() const;
    [[nodiscard]] FindCriteria criteriaFor(const QString &text) const;

    UserDefaults &m_defaults;
    QWidget &m_grid;
    PIDetailController &m_detail;
    QWidget &m_window;
    PhotoFinder m_finder;
    QuickSearchField *m_field;
    TypedSearch *m_typed;
};

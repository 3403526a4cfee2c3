#pragma once

#include "PhotoFinder.h"
#include "QuickSearchField.h"

#include <QObject>

#include <optional>

class LibraryActions;
class LibraryEditor;
class QWidget;
class SearchRun;
class UserDefaults;
struct CommandState;

/// The commands that find photos, and the quick search, which finds while somebody types.
class FindCommands final : public QObject
{
    Q_OBJECT

public:
    /// Lets the actions run the commands. All outlive it; `window` becomes its parent. Photos found are shown in
    /// `grid`, which takes the focus.
    FindCommands(LibraryEditor &editor, UserDefaults &defaults, LibraryActions &actions, QWidget &grid,
                 QWidget &window);

    /// Tells what the commands would act on.
    void describe(CommandState &state) const;
    /// Belongs to the window; its place is to be found.
    [[nodiscard]] QuickSearchField &quickSearchField() const { return *m_field; }
    /// Finds the text, after the selected photos, as the option tells; nothing when it is empty.
    void quickSearch(const QString &text);
    /// How the quick search means its text from now on.
    void setSearchOption(QuickSearchField::Option option);

Q_SIGNALS:
    /// The commands may mean something else now.
    void changed();
    /// Something for the status bar.
    void told(const QString &text);
    /// The quick search is to be seen.
    void quickSearchWanted();

private:
    void find();
    void findSheetFinished();
    void showOutcome(PhotoFinder::Outcome outcome);
    void setCurrentFindCriteria(const FindCriteria &criteria);
    void searchWhatIsTyped(const QString &text);
    void showTyped(const PhotoWalk::Place &place);
    void tellTyped(qint64 matches);
    [[nodiscard]] QuickSearchField::Option option() const;
    [[nodiscard]] FindCriteria criteriaFor(const QString &text) const;

    LibraryEditor &m_editor;
    UserDefaults &m_defaults;
    QWidget &m_grid;
    QWidget &m_window;
    PhotoFinder m_finder;
    QuickSearchField *m_field;
    SearchRun *m_typed;
    PhotoWalk::Place m_typedStart;                ///< where what is being typed is looked for
    std::optional<PhotoWalk::Place> m_typedFound; ///< behind what it has shown
};

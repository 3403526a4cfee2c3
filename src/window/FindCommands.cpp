#include "FindCommands.h"

#include "CommandState.h"
#include "GiveAlert.h"
#include "LibraryActions.h"
#include "LibraryEditor.h"
#include "LibraryView.h"
#include "PIFindDialog.h"
#include "PIFolder.h"
#include "SearchRun.h"
#include "TextForPeople.h"
#include "UserDefaults.h"

namespace {

constexpr Preference<int> kQuickFindOption{"hmphoto.quickFindOption", 0};

}

FindCommands::FindCommands(LibraryEditor &editor, UserDefaults &defaults, LibraryActions &actions, QWidget &grid,
                           QWidget &window)
    : QObject(&window)
    , m_editor(editor)
    , m_defaults(defaults)
    , m_grid(grid)
    , m_window(window)
    , m_finder(editor)
    , m_field(new QuickSearchField(&window))
    , m_typed(new SearchRun(this))
{
    actions.bind(Command::Find, [this](bool) { find(); });
    actions.bind(Command::FindAgain, [this](bool) { showOutcome(m_finder.findAgain()); });
    actions.bind(Command::FindPrevious, [this](bool) { showOutcome(m_finder.findPrevious()); });
    actions.bind(Command::QuickSearch, [this](bool) { Q_EMIT quickSearchWanted(); });
    m_field->showOption(option());
    connect(m_field, &QuickSearchField::optionChosen, this, &FindCommands::setSearchOption);
    connect(m_field, &QuickSearchField::searchWanted, this, [this] { quickSearch(m_field->text()); });
    connect(m_field, &QuickSearchField::leaveWanted, &grid, qOverload<>(&QWidget::setFocus));
    connect(m_field, &QLineEdit::textChanged, this, &FindCommands::searchWhatIsTyped);
    connect(m_typed, &SearchRun::foundFirst, this, &FindCommands::showTyped);
    connect(m_typed, &SearchRun::ended, this, &FindCommands::tellTyped);
}

void FindCommands::describe(CommandState &state) const
{
    state.canFindAgain = m_finder.currentFindCriteria().valid;
}

void FindCommands::find()
{
    m_typed->stop();
    if (PIFindDialog(m_finder, &m_window).exec() == QDialog::Accepted)
        findSheetFinished();
}

void FindCommands::findSheetFinished()
{
    showOutcome(m_finder.find());
    Q_EMIT changed();
}

void FindCommands::showOutcome(PhotoFinder::Outcome outcome)
{
    m_typed->stop();
    if (outcome == PhotoFinder::Outcome::Found) {
        m_grid.setFocus();
    } else if (outcome == PhotoFinder::Outcome::NothingFound) {
        Beep();
        Q_EMIT told(tr("No other photo was found."));
    }
}

void FindCommands::setCurrentFindCriteria(const FindCriteria &criteria)
{
    m_finder.setCurrentFindCriteria(criteria);
    Q_EMIT changed();
}

void FindCommands::quickSearch(const QString &text)
{
    if (text.isEmpty())
        return;
    setCurrentFindCriteria(criteriaFor(text));
    const PhotoFinder::Outcome outcome = m_finder.find();
    m_field->showNothingFound(outcome == PhotoFinder::Outcome::NothingFound);
    showOutcome(outcome);
}

void FindCommands::setSearchOption(QuickSearchField::Option option)
{
    m_defaults.setValue(kQuickFindOption, static_cast<int>(option));
    m_field->showOption(option);
    searchWhatIsTyped(m_field->text());
}

/// More letters look from the same place on: the photo that is found may still be the one.
void FindCommands::searchWhatIsTyped(const QString &text)
{
    if (text.isEmpty()) {
        m_typed->stop();
        m_field->showNothingFound(false);
        Q_EMIT told({});
        return;
    }
    m_typed->start([this, text] {
        const PhotoWalk::Place now = m_finder.startOf(FindCriteria::Start::Selection);
        if (now != m_typedFound)
            m_typedStart = now;
        m_typedFound.reset();
        setCurrentFindCriteria(criteriaFor(text));
        return m_finder.search(m_finder.currentFindCriteria(), m_typedStart);
    });
}

void FindCommands::showTyped(const PhotoWalk::Place &place)
{
    m_finder.show(place);
    m_typedFound = m_finder.startOf(FindCriteria::Start::Selection);
}

void FindCommands::tellTyped(qint64 matches)
{
    m_field->showNothingFound(matches == 0);
    Q_EMIT told(matches == 0
                    ? tr("No photo matches from here on.")
                    : CountText(matches, tr("%n photo matches from here on."), tr("%n photos match from here on.")));
}

QuickSearchField::Option FindCommands::option() const
{
    const int stored = m_defaults.value(kQuickFindOption);
    return stored >= 0 && stored <= 3 ? static_cast<QuickSearchField::Option>(stored) : QuickSearchField::Option::Exact;
}

FindCriteria FindCommands::criteriaFor(const QString &text) const
{
    FindCriteria criteria;
    switch (option()) {
    case QuickSearchField::Option::AllWords:
        criteria.allWordsString = text;
        break;
    case QuickSearchField::Option::OneWord:
        criteria.oneWordString = text;
        break;
    case QuickSearchField::Option::NoneWords:
        criteria.noneWordString = text;
        break;
    case QuickSearchField::Option::Exact:
        criteria.exactString = text;
        break;
    }
    criteria.startOption = FindCriteria::Start::Selection;
    criteria.valid = true;
    return criteria;
}

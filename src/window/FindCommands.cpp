#include "FindCommands.h"

#include "CommandState.h"
#include "GiveAlert.h"
#include "LibraryActions.h"
#include "PIDetailController.h"
#include "PIFindDialog.h"
#include "PIImageView.h"
#include "TextForPeople.h"
#include "TypedSearch.h"
#include "UserDefaults.h"

namespace {

constexpr Preference<int> kQuickFindOption{"hmphoto.quickFindOption", 0};

/// Who is still typing has not finished the next word.
QString withoutTrailingBlanks(QString text)
{
    while (text.endsWith(u' '))
        text.chop(1);
    return text;
}

}

FindCommands::FindCommands(LibraryEditor &editor, UserDefaults &defaults, LibraryActions &actions, QWidget &grid,
                           PIDetailController &detail, QWidget &window)
    : QObject(&window)
    , m_defaults(defaults)
    , m_grid(grid)
    , m_detail(detail)
    , m_window(window)
    , m_finder(editor)
    , m_field(new QuickSearchField(&window))
    , m_typed(new TypedSearch(m_finder, this))
{
    bind(actions);
    detail.addQuickSearch(*m_field);
    m_field->showOption(option());
    connect(m_field, &QuickSearchField::optionChosen, this, &FindCommands::setSearchOption);
    connect(m_field, &QuickSearchField::searchWanted, this, [this] { quickSearch(m_field->text()); });
    connect(m_field, &QuickSearchField::leaveWanted, &grid, qOverload<>(&QWidget::setFocus));
    connect(m_field, &QuickSearchField::left, m_typed, &TypedSearch::stop);
    connect(m_field, &QLineEdit::textChanged, this, &FindCommands::searchWhatIsTyped);
    connect(m_typed, &TypedSearch::ended, this, &FindCommands::tellMatches);
}

void FindCommands::bind(LibraryActions &actions)
{
    actions.bind(Command::Find, [this](bool) {
        connect(&PIFindDialog::performFindForWindow(m_finder, m_window), &QDialog::accepted, this,
                &FindCommands::findSheetFinished);
    });
    actions.bind(Command::FindAgain, [this](bool) { showOutcome(m_finder.findAgain()); });
    actions.bind(Command::FindPrevious, [this](bool) { showOutcome(m_finder.findPrevious()); });
    actions.bind(Command::QuickSearch, [this](bool) {
        Q_EMIT quickSearchWanted();
        m_field->setFocus(Qt::ShortcutFocusReason);
        m_field->selectAll();
    });
}

void FindCommands::describe(CommandState &state) const
{
    state.canFindAgain = m_finder.currentFindCriteria().valid;
}

void FindCommands::findSheetFinished()
{
    m_typed->forget();
    showOutcome(m_finder.find());
    Q_EMIT changed();
}

void FindCommands::showOutcome(PhotoFinder::Outcome outcome)
{
    const bool isNothingFound = outcome == PhotoFinder::Outcome::NothingFound;
    if (isNothingFound)
        Beep();
    m_field->showNothingFound(false);
    Q_EMIT told(isNothingFound ? tr("No photo was found from here on.") : QString());
    if (outcome == PhotoFinder::Outcome::Found)
        m_grid.setFocus();
}

void FindCommands::quickSearch(const QString &text)
{
    if (text.isEmpty())
        return;
    const PhotoFinder::Outcome outcome = m_typed->accept(text, criteriaFor(text));
    showOutcome(outcome);
    m_field->showNothingFound(outcome == PhotoFinder::Outcome::NothingFound);
    Q_EMIT changed();
}

void FindCommands::setSearchOption(QuickSearchField::Option option)
{
    m_defaults.setValue(kQuickFindOption, static_cast<int>(option));
    m_field->showOption(option);
    searchWhatIsTyped(m_field->text());
}

void FindCommands::searchWhatIsTyped(const QString &text)
{
    const QString words = withoutTrailingBlanks(text);
    if (words.isEmpty()) {
        m_typed->forget();
        m_field->showNothingFound(false);
        Q_EMIT told({});
    } else if (!m_detail.photoView().isCropping()) { // photos passed on the way would be cropped
        m_typed->type(text, criteriaFor(words));
        Q_EMIT changed();
    }
}

void FindCommands::tellMatches(qint64 matches)
{
    m_field->showNothingFound(matches == 0);
    if (m_finder.currentFindCriteria().onlyExcludes())
        Q_EMIT told(tr("Words that only leave photos out find nothing."));
    else
        Q_EMIT told(matches == 0 ? tr("No photo matches from here on.")
                                 : CountText(matches, tr("%n photo matches from here on."),
                                             tr("%n photos match from here on.")));
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

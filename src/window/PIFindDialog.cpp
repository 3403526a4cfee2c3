#include "PIFindDialog.h"

#include "PhotoFinder.h"
#include "SearchRun.h"
#include "TextForPeople.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

PIFindDialog::PIFindDialog(PhotoFinder &finder, QWidget *parent)
    : QDialog(parent)
    , m_finder(finder)
    , m_allWords(new QLineEdit(this))
    , m_exact(new QLineEdit(this))
    , m_oneWord(new QLineEdit(this))
    , m_noneWord(new QLineEdit(this))
    , m_captions(new QCheckBox(tr("Ca&ptions"), this))
    , m_fileNames(new QCheckBox(tr("F&ile names"), this))
    , m_keywords(new QCheckBox(tr("&Keywords"), this))
    , m_start(new QButtonGroup(this))
    , m_makeFolder(new QCheckBox(tr("Collect all &matches in a new folder of \"Search Results\""), this))
    , m_matches(new QLabel(this))
    , m_count(new SearchRun(this))
{
    setObjectName(QStringLiteral("FindDialog"));
    setWindowTitle(tr("Find Photos"));
    setWindowModality(Qt::WindowModal);
    auto *grid = new QGridLayout;
    addTexts(*grid);
    grid->addWidget(new QLabel(tr("Look in:"), this), 4, 0, Qt::AlignRight);
    grid->addLayout(makeScope(), 4, 1);
    grid->addWidget(new QLabel(tr("Begin at:"), this), 5, 0, Qt::AlignRight);
    grid->addLayout(makeStart(), 5, 1);
    grid->addWidget(m_makeFolder, 6, 1);
    m_makeFolder->setToolTip(tr("Without it the first match is shown, and Find Again goes on to the next"));

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    m_find = buttons->addButton(tr("&Find"), QDialogButtonBox::AcceptRole);
    m_find->setDefault(true);
    connect(buttons, &QDialogButtonBox::accepted, this, &PIFindDialog::find);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    m_matches->setAccessibleName(tr("Matches"));
    auto *foot = new QHBoxLayout;
    foot->addWidget(m_matches, 1);
    foot->addWidget(buttons);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addStretch();
    layout->addLayout(foot);
    connect(m_count, &SearchRun::ended, this, &PIFindDialog::showCount);
    resize(480, sizeHint().height());
    showCriteria(finder.currentFindCriteria());
}

PIFindDialog &PIFindDialog::performFindForWindow(PhotoFinder &finder, QWidget &window)
{
    auto *sheet = new PIFindDialog(finder, &window);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->open();
    return *sheet;
}

void PIFindDialog::addTexts(QGridLayout &grid)
{
    struct Row
    {
        QString label;
        QString toolTip;
        QLineEdit *field;
    };
    const Row rows[] = {
        {tr("&All of these words:"), tr("A text must contain every one of the words, which blanks part"), m_allWords},
        {tr("This &exact text:"), tr("A text must contain just this, blanks included"), m_exact},
        {tr("&One of these words:"), tr("A text must contain at least one of the words"), m_oneWord},
        {tr("&None of these words:"), tr("Photos are left out if any of their texts contains one of the words"),
         m_noneWord},
    };
    for (int row = 0; const Row &each : rows) {
        auto *label = new QLabel(each.label, this);
        label->setBuddy(each.field);
        each.field->setToolTip(each.toolTip);
        each.field->setClearButtonEnabled(true);
        each.field->setMaxLength(FindCriteria::kLongestText);
        grid.addWidget(label, row, 0, Qt::AlignRight);
        grid.addWidget(each.field, row, 1);
        connect(each.field, &QLineEdit::textChanged, this, &PIFindDialog::enableFind);
        ++row;
    }
}

QLayout *PIFindDialog::makeScope()
{
    auto *layout = new QHBoxLayout;
    for (QCheckBox *box : {m_captions, m_fileNames, m_keywords}) {
        layout->addWidget(box);
        connect(box, &QCheckBox::toggled, this, &PIFindDialog::enableFind);
    }
    layout->addStretch();
    return layout;
}

QLayout *PIFindDialog::makeStart()
{
    auto *layout = new QHBoxLayout;
    const auto add = [&](FindCriteria::Start start, const QString &text) {
        auto *button = new QRadioButton(text, this);
        m_start->addButton(button, static_cast<int>(start));
        layout->addWidget(button);
    };
    add(FindCriteria::Start::Library, tr("&Library"));
    add(FindCriteria::Start::Folder, tr("Folder on &show"));
    add(FindCriteria::Start::Selection, tr("After the sele&ction"));
    layout->addStretch();
    connect(m_start, &QButtonGroup::idToggled, this, &PIFindDialog::enableFind);
    return layout;
}

void PIFindDialog::showCriteria(const FindCriteria &criteria)
{
    m_allWords->setText(criteria.allWordsString);
    m_exact->setText(criteria.exactString);
    m_oneWord->setText(criteria.oneWordString);
    m_noneWord->setText(criteria.noneWordString);
    m_captions->setChecked(criteria.searchCaptions);
    m_fileNames->setChecked(criteria.searchFileNames);
    m_keywords->setChecked(criteria.searchKeywords);
    m_start->button(static_cast<int>(criteria.startOption))->setChecked(true);
    m_makeFolder->setChecked(criteria.makeFolder);
    QLineEdit *first = m_allWords;
    for (QLineEdit *field : {m_noneWord, m_oneWord, m_exact, m_allWords}) {
        if (!field->text().isEmpty())
            first = field;
    }
    first->setFocus();
    first->selectAll();
    enableFind();
}

FindCriteria PIFindDialog::criteria() const
{
    FindCriteria criteria;
    criteria.allWordsString = m_allWords->text();
    criteria.exactString = m_exact->text();
    criteria.oneWordString = m_oneWord->text();
    criteria.noneWordString = m_noneWord->text();
    criteria.makeFolder = m_makeFolder->isChecked();
    criteria.searchCaptions = m_captions->isChecked();
    criteria.searchFileNames = m_fileNames->isChecked();
    criteria.searchKeywords = m_keywords->isChecked();
    criteria.startOption = static_cast<FindCriteria::Start>(m_start->checkedId());
    criteria.valid = true;
    return criteria;
}

void PIFindDialog::enableFind()
{
    const FindCriteria criteria = this->criteria();
    m_find->setEnabled(criteria.canSearch());
    m_matches->clear();
    if (criteria.canSearch())
        m_count->start([this, criteria] { return m_finder.search(criteria, m_finder.startOf(criteria.startOption)); });
    else
        m_count->stop();
}

void PIFindDialog::showCount(qint64 matches)
{
    const bool isAll = m_start->checkedId() == static_cast<int>(FindCriteria::Start::Library);
    if (criteria().onlyExcludes())
        m_matches->setText(tr("These words only leave photos out."));
    else if (isAll)
        m_matches->setText(CountText(matches, tr("%n photo matches."), tr("%n photos match.")));
    else
        m_matches->setText(
            CountText(matches, tr("%n photo matches from there on."), tr("%n photos match from there on.")));
}

void PIFindDialog::find()
{
    m_finder.setCurrentFindCriteria(criteria());
    accept();
}

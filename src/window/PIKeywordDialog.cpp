#include "PIKeywordDialog.h"

#include "GiveAlert.h"
#include "KeywordTable.h"
#include "KeywordTableModel.h"
#include "LibraryEditor.h"
#include "LibraryNotifications.h"
#include "PIFolder.h"
#include "PhotoLibrary.h"
#include "TextForPeople.h"
#include "ThumbnailGridView.h"

#include <QBoxLayout>
#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSplitter>

#include <utility>

void PIKeywordDialog::manageKeywords(LibraryEditor &editor, QVUndoManager &undo, QWidget &inWindow)
{
    auto *dialog = new PIKeywordDialog(editor, undo, &inWindow);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
}

PIKeywordDialog::PIKeywordDialog(LibraryEditor &editor, QVUndoManager &undo, QWidget *parent)
    : QDialog(parent)
    , m_editor(editor)
    , m_keywords(editor, undo)
    , m_counts(std::as_const(editor.library()).groups(), editor.library().keywords(),
               [this] { m_model->countsChanged(); })
    , m_search(std::as_const(editor.library()).groups(),
               [this](const PIGroup::PhotoList &photos) { addResults(photos); })
    , m_dummyFolder(std::make_shared<PIFolder>())
    , m_model(new KeywordTableModel(m_keywords, m_counts, this))
    , m_filter(new QLineEdit(this))
    , m_keywordTable(new KeywordTable(*m_model, this))
    , m_renameButton(new QPushButton(tr("&Rename"), this))
    , m_deleteButton(new QPushButton(this))
    , m_countLabel(new QLabel(this))
    , m_thumbnailView(new ThumbnailGridView(editor.library(), this))
    , m_jumpButton(new QPushButton(tr("&Show Photo"), this))
{
    build();
    observe();
    selectionChanged();
    m_counts.count();
}

PIKeywordDialog::~PIKeywordDialog()
{
    m_keywordTable->disconnect(this);
    m_thumbnailView->disconnect(this);
}

void PIKeywordDialog::build()
{
    setObjectName(QStringLiteral("PIKeywordDialog"));
    setWindowTitle(tr("Keywords"));
    setWindowModality(Qt::WindowModal);
    resize(900, 580);
    auto *panes = new QSplitter(Qt::Horizontal, this);
    panes->addWidget(buildList());
    panes->addWidget(buildResults());
    panes->setStretchFactor(1, 1);
    panes->setChildrenCollapsible(false);
    panes->setSizes({340, 540});

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)
        ->setToolTip(tr("Rename and delete the keywords for all photos. This cannot be undone"));
    connect(buttons, &QDialogButtonBox::accepted, this, &PIKeywordDialog::ok);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(panes, 1);
    layout->addWidget(buttons);
    m_filter->setFocus();
}

QWidget *PIKeywordDialog::buildList()
{
    m_filter->setClearButtonEnabled(true);
    m_filter->setToolTip(tr("Show only keywords that contain this text"));
    m_filter->setAccessibleName(tr("Filter"));
    m_filter->installEventFilter(this);
    m_renameButton->setToolTip(tr("Change the keyword for all photos that have it"));
    m_deleteButton->setToolTip(tr("Take the keyword off all photos that have it"));
    auto *pane = new QWidget(this);
    auto *filter = new QHBoxLayout;
    auto *label = new QLabel(tr("&Filter:"), pane);
    label->setBuddy(m_filter);
    filter->addWidget(label);
    filter->addWidget(m_filter, 1);
    auto *row = new QHBoxLayout;
    for (QPushButton *button : {m_renameButton, m_deleteButton}) {
        button->setAutoDefault(false);
        row->addWidget(button);
    }
    row->addStretch();
    auto *layout = new QVBoxLayout(pane);
    layout->setContentsMargins({});
    layout->addLayout(filter);
    layout->addWidget(m_keywordTable, 1);
    layout->addLayout(row);
    return pane;
}

QWidget *PIKeywordDialog::buildResults()
{
    m_thumbnailView->setFolder(m_dummyFolder);
    m_thumbnailView->setDragEnabled(false); // its photos stand elsewhere
    m_thumbnailView->setAcceptDrops(false);
    m_thumbnailView->setShown(TileLine::FileName);
    m_thumbnailView->setAccessibleName(tr("Photos with the keyword"));
    m_jumpButton->setAutoDefault(false);
    m_jumpButton->setToolTip(tr("Make the changes, close, and show the selected photo in its folder"));
    auto *pane = new QWidget(this);
    auto *row = new QHBoxLayout;
    row->addWidget(m_countLabel, 1);
    row->addWidget(m_jumpButton);
    auto *layout = new QVBoxLayout(pane);
    layout->setContentsMargins({});
    layout->addWidget(m_thumbnailView, 1);
    layout->addLayout(row);
    return pane;
}

void PIKeywordDialog::observe()
{
    connect(m_filter, &QLineEdit::textChanged, m_keywordTable, &KeywordTable::setFilter);
    connect(m_keywordTable, &KeywordTable::selectedRowChanged, this, &PIKeywordDialog::selectionChanged);
    connect(m_keywordTable, &KeywordTable::deleteWanted, this, &PIKeywordDialog::toggleDeleted);
    connect(m_model, &QAbstractItemModel::dataChanged, this, &PIKeywordDialog::nameDeleteButton);
    connect(m_renameButton, &QPushButton::clicked, m_keywordTable, &KeywordTable::editSelected);
    connect(m_deleteButton, &QPushButton::clicked, this, &PIKeywordDialog::toggleDeleted);
    connect(m_jumpButton, &QPushButton::clicked, this, [this] { jumpToPhoto(firstSelectedResult()); });
    connect(m_thumbnailView, &ThumbnailGridView::photoActivated, this,
            [this](int row) { jumpToPhoto(std::as_const(*m_dummyFolder).photos().value(row)); });
    connect(m_thumbnailView, &ThumbnailGridView::selectedPhotosChanged, this,
            [this] { m_jumpButton->setEnabled(firstSelectedResult() != nullptr); });
    m_keywordsObserver = m_editor.library().notifications().observe(kKeywordsNotification, [this](const auto &) {
        m_model->takeUpNewKeywords();
        m_counts.count();
    });
}

/// From the filter one goes on to the list; closing the sheet takes another key.
bool PIKeywordDialog::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_filter || event->type() != QEvent::KeyPress)
        return QDialog::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent *>(event)->key();
    if (key != Qt::Key_Down && key != Qt::Key_Return && key != Qt::Key_Enter)
        return false;
    m_keywordTable->enter();
    return true;
}

void PIKeywordDialog::done(int result)
{
    m_search.cancel();
    m_keywordsObserver = {};
    QDialog::done(result);
}

bool PIKeywordDialog::commitChanges()
{
    m_keywordTable->endEditing();
    if (m_keywords.commitChanges())
        return true;
    Beep();
    return false;
}

void PIKeywordDialog::ok()
{
    if (commitChanges())
        accept();
}

void PIKeywordDialog::jumpToPhoto(const std::shared_ptr<PIPhoto> &photo)
{
    if (!photo || !commitChanges())
        return;
    m_editor.library().notifications().post(kForcePhotoNotification, photo);
    accept();
}

void PIKeywordDialog::toggleDeleted()
{
    m_keywordTable->endEditing();
    if (const int row = m_keywordTable->selectedRow(); row >= 0)
        m_model->toggleDeleted(row);
}

void PIKeywordDialog::nameDeleteButton()
{
    const int row = m_keywordTable->selectedRow();
    const bool isToBeDeleted = row >= 0 && m_keywords.rows().at(row).isToBeDeleted;
    m_deleteButton->setText(isToBeDeleted ? tr("Un&delete") : tr("&Delete"));
}

void PIKeywordDialog::selectionChanged()
{
    const int row = m_keywordTable->selectedRow();
    m_renameButton->setEnabled(row >= 0);
    m_deleteButton->setEnabled(row >= 0);
    nameDeleteButton();
    m_search.cancel();
    m_dummyFolder->photos().clear();
    m_thumbnailView->reload();
    m_jumpButton->setEnabled(false);
    m_countLabel->clear();
    if (row >= 0)
        m_search.search(m_keywords.rows().at(row).index);
}

void PIKeywordDialog::addResults(const PIGroup::PhotoList &photos)
{
    m_dummyFolder->photos() += photos;
    const qsizetype count = std::as_const(*m_dummyFolder).photos().size();
    m_thumbnailView->reload();
    m_thumbnailView->selectIndexes(IndexSet::single(count - 1));
    m_thumbnailView->scrollToSelection();
    m_countLabel->setText(CountText(count, tr("1 photo"), tr("%n photos")));
}

std::shared_ptr<PIPhoto> PIKeywordDialog::firstSelectedResult() const
{
    const auto first = m_thumbnailView->selectedPositions().first();
    return first ? std::as_const(*m_dummyFolder).photos().value(*first) : nullptr;
}

#include "FolderChooser.h"

#include "LibraryView.h"
#include "NavigatorModel.h"
#include "PIFolder.h"
#include "TextForPeople.h"
#include "TreeEdits.h"

#include <QBoxLayout>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTreeView>

FolderChooser::FolderChooser(LibraryEditor &editor, int photoCount, QWidget *parent)
    : QDialog(parent)
    , m_canTake([shown = std::static_pointer_cast<PIGroup>(editor.view().shownFolder())](
                    const std::shared_ptr<PIGroup> &item) { return item != shown; })
    , m_model(new NavigatorModel(editor.library(), editor, this))
    , m_tree(new QTreeView(this))
{
    build(CountText(photoCount, tr("Where is the photo to stand? Its file stays where it is."),
                    tr("Where are the %n photos to stand? Their files stay where they are.")),
          editor.view().shownFolder());
}

FolderChooser::FolderChooser(LibraryEditor &editor, const std::shared_ptr<PIFolder> &folder, QWidget *parent)
    : QDialog(parent)
    , m_canTake([folder](const std::shared_ptr<PIGroup> &item) {
        return item != folder->parent() && TreeEdits::canMoveInto(item, *folder);
    })
    , m_model(new NavigatorModel(editor.library(), editor, this))
    , m_tree(new QTreeView(this))
{
    build(tr("Where is “%1” to stand?").arg(folder->name()), folder->parent());
    m_copy->hide();
}

void FolderChooser::build(const QString &question, const std::shared_ptr<PIGroup> &start)
{
    setWindowTitle(tr("Move to Folder"));
    setWindowModality(Qt::WindowModal);
    m_tree->setModel(m_model);
    m_tree->setHeaderHidden(true);
    m_tree->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_tree->setAccessibleName(tr("Groups and folders"));
    m_tree->header()->setStretchLastSection(false);
    m_tree->header()->setSectionResizeMode(NavigatorModel::NameColumn, QHeaderView::Stretch);
    m_tree->header()->setSectionResizeMode(NavigatorModel::CountColumn, QHeaderView::ResizeToContents);
    m_tree->expandAll();
    m_tree->setCurrentIndex(m_model->indexOf(start.get()));
    m_tree->scrollTo(m_tree->currentIndex(), QAbstractItemView::PositionAtCenter);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    m_move = buttons->addButton(tr("Move"), QDialogButtonBox::AcceptRole);
    m_copy = buttons->addButton(tr("Copy"), QDialogButtonBox::ActionRole);
    m_move->setDefault(true);
    connect(m_move, &QPushButton::clicked, this, [this] { choose(PhotoEdits::Transfer::Move); });
    connect(m_copy, &QPushButton::clicked, this, [this] { choose(PhotoEdits::Transfer::Copy); });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_tree->selectionModel(), &QItemSelectionModel::currentChanged, this, &FolderChooser::enableButtons);
    connect(m_tree, &QTreeView::doubleClicked, m_move, &QPushButton::click);

    auto *label = new QLabel(this);
    label->setTextFormat(Qt::PlainText);
    label->setText(question);
    label->setWordWrap(true);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addWidget(m_tree, 1);
    layout->addWidget(buttons);
    resize(380, 440);
    enableButtons();
}

std::shared_ptr<PIGroup> FolderChooser::selected() const
{
    return m_model->itemAt(m_tree->currentIndex().siblingAtColumn(NavigatorModel::NameColumn));
}

void FolderChooser::enableButtons()
{
    const auto item = selected();
    const bool canTake = item && m_canTake(item);
    m_move->setEnabled(canTake);
    m_copy->setEnabled(canTake);
}

void FolderChooser::choose(PhotoEdits::Transfer transfer)
{
    m_choice = Choice{selected(), transfer};
    accept();
}

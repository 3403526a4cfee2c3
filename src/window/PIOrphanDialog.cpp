#include "PIOrphanDialog.h"

#include "FileViewer.h"
#include "OrphanTableModel.h"
#include "PicturePreview.h"
#include "StringUtilities.h"
#include "TextForPeople.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QSplitter>
#include <QStyledItemDelegate>
#include <QTreeView>
#include <QVBoxLayout>

namespace {

constexpr int kPicturesMilliseconds = 50; ///< what scrolls past faster needs no picture

/// Frames tick boxes so that they are seen on a dark ground: styles make the frame from the window's colour, darker.
class TickDelegate final : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        const QPalette &colours = option->palette;
        if (colours.color(QPalette::Base).lightness() < colours.color(QPalette::Text).lightness())
            option->palette.setColor(QPalette::Window, colours.color(QPalette::Text));
    }
};

}

void PIOrphanDialog::pickOrphans(const Orphans &orphans, PixelPool &pool, QWidget &inWindow,
                                 const Completion &completion)
{
    auto *dialog = new PIOrphanDialog(orphans, pool, &inWindow);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::finished, &inWindow,
            [orphans, completion](int result) { completion(orphans, result == QDialog::Accepted); });
    dialog->open();
}

PIOrphanDialog::PIOrphanDialog(Orphans orphans, PixelPool &pool, QWidget *parent)
    : QDialog(parent)
    , m_orphans(std::move(orphans))
    , m_model(new OrphanTableModel(*m_orphans, this))
    , m_table(new QTreeView(this))
    , m_preview(new PicturePreview(pool, this))
    , m_path(new QLabel(this))
    , m_missing(new QLabel(this))
    , m_reattach(new QCheckBox(tr("Re-attach it instead of adding a new photo"), this))
    , m_show(new QPushButton(tr("Show in File Manager"), this))
{
    build();
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this, &PIOrphanDialog::selectionChanged);
    connect(m_show, &QPushButton::clicked, this, &PIOrphanDialog::showInFinder);
    connect(m_reattach, &QCheckBox::clicked, this,
            [this](bool reattach) { m_model->setReattached(selectedRow(), reattach); });
    m_picturesTimer.setSingleShot(true);
    m_picturesTimer.setInterval(kPicturesMilliseconds);
    connect(&m_picturesTimer, &QTimer::timeout, this, &PIOrphanDialog::showPictures);
    connect(m_table->verticalScrollBar(), &QScrollBar::valueChanged, this, &PIOrphanDialog::showPicturesSoon);
    selectionChanged();
    m_table->setCurrentIndex(m_model->index(static_cast<int>(m_orphans->startRow()), OrphanTableModel::Name));
}

void PIOrphanDialog::build()
{
    setWindowTitle(tr("Orphan Files"));
    setWindowModality(Qt::WindowModal);
    resize(940, 560);
    auto *panes = new QSplitter(Qt::Horizontal, this);
    panes->addWidget(buildList());
    panes->addWidget(buildPreview());
    panes->setStretchFactor(0, 1);
    panes->setChildrenCollapsible(false);
    panes->setSizes({600, 320});

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    QPushButton *all = buttons->addButton(tr("Add All"), QDialogButtonBox::ActionRole);
    all->setToolTip(tr("Tick every file, and take all of them"));
    buttons->button(QDialogButtonBox::Ok)->setToolTip(tr("Take the files that are ticked"));
    connect(all, &QPushButton::clicked, this, &PIOrphanDialog::addAll);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *heading = new QLabel(summary(), this);
    heading->setWordWrap(true);
    heading->setTextFormat(Qt::PlainText);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(heading);
    layout->addWidget(panes, 1);
    layout->addWidget(buttons);
}

QWidget *PIOrphanDialog::buildList()
{
    m_table->setModel(m_model);
    m_table->setItemDelegateForColumn(OrphanTableModel::Add, new TickDelegate(m_table));
    m_table->setRootIsDecorated(false);
    m_table->setUniformRowHeights(true); // there may be very many
    m_table->setAlternatingRowColors(true);
    m_table->setAllColumnsShowFocus(true);
    m_table->setTextElideMode(Qt::ElideMiddle);
    m_table->setAccessibleName(tr("Orphan files"));
    m_table->setToolTip(tr("Tick the files to take. With the Alt key, all files get the tick"));
    QHeaderView &header = *m_table->header();
    header.setStretchLastSection(false);
    header.setSectionResizeMode(OrphanTableModel::Path, QHeaderView::Stretch);
    header.resizeSection(OrphanTableModel::Add, 48);
    header.resizeSection(OrphanTableModel::Name, 270);
    header.resizeSection(OrphanTableModel::Missing, 160);
    m_table->setColumnHidden(OrphanTableModel::Missing, !m_orphans->hasAnyOfPhotos());
    return m_table;
}

QWidget *PIOrphanDialog::buildPreview()
{
    for (QLabel *label : {m_path, m_missing}) {
        label->setWordWrap(true);
        label->setTextFormat(Qt::PlainText);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    }
    m_show->setToolTip(tr("Show the selected file in the file manager"));
    m_reattach->setToolTip(tr("The photo shows this file from now on, with its caption, keywords and edits"));
    auto *pane = new QWidget(this);
    auto *layout = new QVBoxLayout(pane);
    layout->setContentsMargins(8, 0, 0, 0);
    layout->addWidget(m_preview, 1);
    layout->addWidget(m_path);
    layout->addWidget(m_missing);
    layout->addWidget(m_reattach);
    layout->addWidget(m_show, 0, Qt::AlignLeft);
    return pane;
}

QString PIOrphanDialog::summary() const
{
    const int count = static_cast<int>(m_orphans->count());
    const int missing = m_orphans->missingCount();
    const QString folder = QVString::abbreviateHomeFolderPath(m_orphans->folder());
    QString text = CountText(count, tr("%n photo file in “%1” is not in the library."),
                             tr("%n photo files in “%1” are not in the library."))
                       .arg(folder);
    if (missing == 1)
        text += u' ' + (count == 1 ? tr("A photo of the library misses it.")
                                   : tr("A photo of the library misses one of them."));
    else if (missing > 1)
        text += u' ' + CountText(missing, {}, tr("Photos of the library miss %n of them."));
    return text;
}

int PIOrphanDialog::selectedRow() const
{
    const QModelIndexList rows = m_table->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

void PIOrphanDialog::selectionChanged()
{
    const int row = selectedRow();
    const bool isOfPhoto = row >= 0 && m_orphans->isOfPhoto(row);
    const QString path = row >= 0 ? m_orphans->path(row) : QString();
    m_show->setEnabled(row >= 0);
    m_preview->setPath(path);
    m_path->setText(QVString::abbreviateHomeFolderPath(path));
    m_missing->setText(isOfPhoto ? m_orphans->photoText(row) : QString());
    m_missing->setVisible(isOfPhoto);
    m_reattach->setVisible(isOfPhoto);
    m_reattach->setChecked(isOfPhoto && m_orphans->isReattached(row));
}

void PIOrphanDialog::resizeEvent(QResizeEvent *event)
{
    QDialog::resizeEvent(event);
    showPicturesSoon();
}

void PIOrphanDialog::showPicturesSoon()
{
    if (!m_picturesTimer.isActive())
        m_picturesTimer.start();
}

void PIOrphanDialog::showPictures()
{
    const QRect area = m_table->viewport()->rect();
    const QModelIndex top = m_table->indexAt(area.topLeft());
    const QModelIndex bottom = m_table->indexAt(area.bottomLeft());
    if (top.isValid())
        m_model->setVisibleRows(top.row(), bottom.isValid() ? bottom.row() : m_model->rowCount() - 1);
}

void PIOrphanDialog::addAll()
{
    m_model->setAllAdd(true);
    accept();
}

void PIOrphanDialog::showInFinder()
{
    if (const int row = selectedRow(); row >= 0)
        revealInFileViewer({m_orphans->path(row)});
}

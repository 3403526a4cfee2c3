#include "EffectSetsDialog.h"

#include "EffectSetEdits.h"
#include "FilterCatalogue.h"
#include "FormatMessage.h"
#include "GiveAlert.h"
#include "LibraryEditor.h"
#include "PhotoLibrary.h"
#include "PlainText.h"

#include <QBoxLayout>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>

#include <algorithm>

namespace {

QString effectNames(const EffectChain &chain, const FilterCatalogue &catalogue)
{
    QStringList names;
    for (const EffectEntry &entry : chain)
        names << catalogue.displayName(entry.filterName());
    return names.join(QLatin1String(", "));
}

void tellWhy(EffectSetEdits::Outcome outcome, const QString &name)
{
    if (outcome == EffectSetEdits::Outcome::NameTaken)
        GiveAlert(EffectSetsDialog::tr("Can't rename the effect set."),
                  FormatMessage(EffectSetsDialog::tr("There is another effect set named \"%@\"."), {name}));
    else if (outcome == EffectSetEdits::Outcome::NoName)
        GiveAlert(EffectSetsDialog::tr("Can't rename the effect set."),
                  EffectSetsDialog::tr("An effect set needs a name."));
}

}

EffectSetsDialog::EffectSetsDialog(LibraryEditor &editor, const FilterCatalogue &catalogue, QWidget *parent)
    : QDialog(parent)
    , m_editor(editor)
    , m_catalogue(catalogue)
    , m_list(new QListWidget(this))
    , m_rename(new QPushButton(tr("&Rename"), this))
    , m_delete(new QPushButton(tr("&Delete"), this))
{
    setObjectName(QStringLiteral("EffectSetsDialog"));
    setWindowTitle(tr("Effect Sets"));
    setWindowModality(Qt::WindowModal);
    m_list->setAccessibleName(windowTitle());
    m_list->setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::DoubleClicked);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    for (QPushButton *button : {m_rename, m_delete}) {
        button->setAutoDefault(false);
        buttons->addButton(button, QDialogButtonBox::ActionRole);
    }
    m_rename->setToolTip(tr("Change the name of the set"));
    m_delete->setToolTip(tr("Delete the set. Photos that have its effects keep them"));
    connect(m_rename, &QPushButton::clicked, this, [this] { m_list->editItem(m_list->currentItem()); });
    connect(m_delete, &QPushButton::clicked, this, &EffectSetsDialog::remove);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_list, &QListWidget::currentItemChanged, this, &EffectSetsDialog::enableButtons);
    connect(m_list, &QListWidget::itemChanged, this, [this](const QListWidgetItem *item) { rename(*item); });

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(tr("The menu offers the first fifteen sets on the keys F1 to F15."), this));
    layout->addWidget(m_list, 1);
    layout->addWidget(buttons);
    resize(420, 320);
    showSets({});
}

void EffectSetsDialog::showSets(const QString &selected)
{
    const QSignalBlocker silent(m_list);
    m_list->clear();
    const EffectSetStore &sets = m_editor.library().effectSets();
    for (const QString &name : sortedEffectSetNames(sets)) {
        auto *item = new QListWidgetItem(name, m_list);
        item->setFlags(item->flags() | Qt::ItemIsEditable);
        item->setData(Qt::UserRole, name);
        item->setToolTip(plainText(effectNames(sets.value(name), m_catalogue)));
        if (name == selected)
            m_list->setCurrentItem(item);
    }
    if (!m_list->currentItem())
        m_list->setCurrentRow(0);
    enableButtons();
}

void EffectSetsDialog::enableButtons()
{
    m_rename->setEnabled(m_list->currentItem());
    m_delete->setEnabled(m_list->currentItem());
}

void EffectSetsDialog::rename(const QListWidgetItem &item)
{
    const QString name = item.data(Qt::UserRole).toString();
    const QString newName = EffectSetEdits::cleanName(item.text());
    const auto outcome = EffectSetEdits::rename(m_editor, name, newName);
    tellWhy(outcome, newName);
    // The list is filled anew when the item's editor is closed.
    QMetaObject::invokeMethod(
        this, [this, shown = outcome == EffectSetEdits::Outcome::Done ? newName : name] { showSets(shown); },
        Qt::QueuedConnection);
}

void EffectSetsDialog::remove()
{
    const int row = m_list->currentRow();
    static_cast<void>(EffectSetEdits::remove(m_editor, m_list->currentItem()->data(Qt::UserRole).toString()));
    showSets({});
    m_list->setCurrentRow(std::min(row, m_list->count() - 1));
}

namespace {

bool mayReplace(const EffectSetStore &sets, const QString &name)
{
    return !sets.contains(name) ||
           GiveAlert(EffectSetsDialog::tr("Replace the effect set?"),
                     FormatMessage(EffectSetsDialog::tr("There is an effect set named \"%@\" already."), {name}),
                     {EffectSetsDialog::tr("Replace"), EffectSetsDialog::tr("Cancel")}, /*escapeButton=*/1) == 0;
}

}

QString askForEffectSetName(LibraryEditor &editor, QWidget &window)
{
    QDialog dialog(&window);
    dialog.setObjectName(QStringLiteral("EffectSetNameDialog"));
    dialog.setWindowTitle(EffectSetsDialog::tr("Save Effect Set"));
    dialog.setWindowModality(Qt::WindowModal);
    auto *name = new QComboBox(&dialog);
    name->setEditable(true);
    name->setInsertPolicy(QComboBox::NoInsert);
    name->addItems(sortedEffectSetNames(editor.library().effectSets()));
    name->clearEditText();
    name->setAccessibleName(EffectSetsDialog::tr("Name"));
    auto *label = new QLabel(EffectSetsDialog::tr("Save the effects of the photo as a set named:"), &dialog);
    label->setBuddy(name);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel, &dialog);
    QPushButton *save = buttons->button(QDialogButtonBox::Save);
    save->setEnabled(false);
    QObject::connect(name, &QComboBox::editTextChanged, save,
                     [save](const QString &text) { save->setEnabled(!EffectSetEdits::cleanName(text).isEmpty()); });
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, [&] {
        if (mayReplace(editor.library().effectSets(), EffectSetEdits::cleanName(name->currentText())))
            dialog.accept();
    });
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    auto *layout = new QVBoxLayout(&dialog);
    layout->addWidget(label);
    layout->addWidget(name);
    layout->addWidget(buttons);
    dialog.resize(380, dialog.sizeHint().height());
    return dialog.exec() == QDialog::Accepted ? EffectSetEdits::cleanName(name->currentText()) : QString();
}

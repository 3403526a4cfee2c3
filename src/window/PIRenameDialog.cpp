#include "PIRenameDialog.h"

#include "BatchRename.h"
#include "LibraryNotifications.h"
#include "PIPhoto.h"
#include "PhotoEdits.h"
#include "PhotoLibrary.h"
#include "RenamePreview.h"
#include "UserDefaults.h"

#include <QBoxLayout>
#include <QButtonGroup>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>

namespace {

using Style = RenameSettings::Style;

constexpr Preference<int> kStyle{"hmphoto.rd.style", 0};
constexpr Preference<const char *> kExtension{"hmphoto.rd.ext", "jpg"};
constexpr Preference<const char *> kNewPrefix{"hmphoto.rd.new", ""};
constexpr Preference<const char *> kPrefix{"hmphoto.rd.prefix", ""};
constexpr Preference<int> kComplete{"hmphoto.rd.complete", 0};

constexpr int kLargestNumber = 999'999'999;
enum Complete { AfterOthers, FromNumber };

QSpinBox *numberField(const QString &name, QWidget *parent)
{
    auto *field = new QSpinBox(parent);
    field->setRange(1, kLargestNumber);
    field->setAccessibleName(name);
    return field;
}

QLineEdit *textField(const QString &name, QWidget *parent)
{
    auto *field = new QLineEdit(parent);
    field->setAccessibleName(name);
    return field;
}

void store(UserDefaults &defaults, const Preference<const char *> &preference, const QString &text)
{
    if (text.isEmpty())
        defaults.remove(QLatin1String(preference.key));
    else
        defaults.setValue(preference, text);
}

void check(QButtonGroup &group, int id)
{
    QAbstractButton *button = group.button(id);
    (button ? button : group.button(0))->setChecked(true);
}

}

PIRenameDialog *PIRenameDialog::initWithController(LibraryEditor &editor, UserDefaults &defaults, QWidget &window)
{
    const PIGroup::PhotoList photos = BatchRename::renamable(PhotoEdits(editor).selectedPhotos());
    return photos.isEmpty() ? nullptr : new PIRenameDialog(photos, editor, defaults, &window);
}

PIRenameDialog::PIRenameDialog(const PIGroup::PhotoList &photos, LibraryEditor &editor, UserDefaults &defaults,
                               QWidget *parent)
    : QDialog(parent)
    , m_editor(editor)
    , m_defaults(defaults)
    , m_photos(photos)
    , m_paths(BatchRename::pathsOf(photos))
    , m_lostPaths(BatchRename::lostPaths(editor.library()))
    , m_styleOptions(new QButtonGroup(this))
    , m_oldPrefixField(textField(tr("Old prefix"), this))
    , m_newPrefixField(textField(tr("New prefix"), this))
    , m_renumberField(numberField(tr("First number"), this))
    , m_extensionField(textField(tr("Extension"), this))
    , m_prefixField(textField(tr("Prefix of new names"), this))
    , m_completeOptions(new QButtonGroup(this))
    , m_completeNumberField(numberField(tr("Number of the first new name"), this))
    , m_preview(new RenamePreview(this))
    , m_okButton(new QPushButton(tr("&Rename"), this))
{
    setObjectName(QStringLiteral("RenameDialog"));
    setWindowTitle(tr("Rename Files"));
    setWindowModality(Qt::WindowModal);
    build();
    readPreferences();
    observe();
    observeFiles();
    changeStyle();
}

QRadioButton *PIRenameDialog::addChoice(QButtonGroup &group, int id, const QString &text, const QString &toolTip)
{
    auto *button = new QRadioButton(text, this);
    button->setToolTip(toolTip);
    group.addButton(button, id);
    return button;
}

QWidget *PIRenameDialog::buildStyles()
{
    const auto row = [](const QList<QWidget *> &widgets) {
        auto *line = new QHBoxLayout;
        for (QWidget *widget : widgets)
            line->addWidget(widget, qobject_cast<QLineEdit *>(widget) ? 1 : 0);
        if (!qobject_cast<QLineEdit *>(widgets.last()))
            line->addStretch();
        return line;
    };
    const auto style = [this](Style id, const QString &text, const QString &toolTip) {
        return addChoice(*m_styleOptions, static_cast<int>(id), text, toolTip);
    };
    auto *choices = new QWidget(this);
    auto *grid = new QGridLayout(choices);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setColumnStretch(1, 1);
    grid->addWidget(style(Style::ReplacePrefix, tr("Replace &prefix:"),
                          tr("Names that begin with the old prefix get the new one instead")),
                    0, 0);
    grid->addLayout(row({m_oldPrefixField, new QLabel(tr("by"), choices), m_newPrefixField}), 0, 1);
    grid->addWidget(style(Style::Renumber, tr("Re&number from:"),
                          tr("Names keep their beginning and get a running number at the end")),
                    1, 0);
    grid->addLayout(row({m_renumberField}), 1, 1);
    grid->addWidget(style(Style::Extension, tr("Change &extension to:"),
                          tr("The name stays and so does the format; only what stands behind the dot changes")),
                    2, 0);
    grid->addLayout(row({m_extensionField}), 2, 1);
    grid->addWidget(
        style(Style::NewNames, tr("New na&mes with prefix:"), tr("All names get this prefix and a running number")), 3,
        0);
    grid->addLayout(row({m_prefixField}), 3, 1);
    grid->addLayout(row({addChoice(*m_completeOptions, AfterOthers, tr("&Automatic numbers"),
                                   tr("The numbers follow those of files that have the prefix already")),
                         addChoice(*m_completeOptions, FromNumber, tr("N&umbers from:"),
                                   tr("The numbers begin here, but always after those of other files")),
                         m_completeNumberField}),
                    4, 1);
    const QList<QWidget *> order{m_styleOptions->button(0),
                                 m_oldPrefixField,
                                 m_newPrefixField,
                                 m_styleOptions->button(1),
                                 m_renumberField,
                                 m_styleOptions->button(2),
                                 m_extensionField,
                                 m_styleOptions->button(3),
                                 m_prefixField,
                                 m_completeOptions->button(AfterOthers),
                                 m_completeOptions->button(FromNumber),
                                 m_completeNumberField,
                                 m_preview,
                                 m_okButton};
    for (qsizetype i = 1; i < order.size(); ++i)
        setTabOrder(order.at(i - 1), order.at(i));
    return choices;
}

void PIRenameDialog::build()
{
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    buttons->addButton(m_okButton, QDialogButtonBox::AcceptRole);
    m_okButton->setDefault(true);
    m_okButton->setToolTip(tr("Rename the files on disk. This cannot be undone"));
    connect(buttons, &QDialogButtonBox::accepted, this, &PIRenameDialog::rename);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(buildStyles());
    layout->addWidget(m_preview, 1);
    layout->addWidget(buttons);
    resize(640, 520);
}

void PIRenameDialog::readPreferences()
{
    check(*m_styleOptions, m_defaults.value(kStyle));
    m_oldPrefixField->setText(beginningOfName(m_photos.first()->fileRef()->path()));
    m_newPrefixField->setText(m_defaults.value(kNewPrefix));
    m_extensionField->setText(m_defaults.value(kExtension));
    m_prefixField->setText(m_defaults.value(kPrefix));
    check(*m_completeOptions, m_defaults.value(kComplete));
}

void PIRenameDialog::observe()
{
    connect(m_styleOptions, &QButtonGroup::idClicked, this, &PIRenameDialog::changeStyle);
    connect(m_completeOptions, &QButtonGroup::idToggled, this, &PIRenameDialog::enableRename);
    for (const QLineEdit *field : {m_oldPrefixField, m_newPrefixField, m_extensionField, m_prefixField})
        connect(field, &QLineEdit::textChanged, this, &PIRenameDialog::enableRename);
    connect(m_renumberField, &QSpinBox::valueChanged, this, &PIRenameDialog::enableRename);
    connect(m_completeNumberField, &QSpinBox::textChanged, this, &PIRenameDialog::controlTextDidChange);
}

/// Files are moved and removed also while the sheet is open.
void PIRenameDialog::observeFiles()
{
    constexpr int kMilliseconds = 200; // all photos of the library are looked at
    m_filesChanged.setSingleShot(true);
    m_filesChanged.setInterval(kMilliseconds);
    connect(&m_filesChanged, &QTimer::timeout, this, &PIRenameDialog::takeFiles);
    m_fileObserver =
        m_editor.library().notifications().observe(kThumbnailNotification, [this](const NotificationObject &) {
            if (!m_filesChanged.isActive())
                m_filesChanged.start();
        });
    connect(m_preview, &RenamePreview::becameUpToDate, this, &PIRenameDialog::acceptWhenPlanned);
}

void PIRenameDialog::takeFiles()
{
    const PIGroup::PhotoList present = BatchRename::renamable(m_photos);
    const QStringList paths = BatchRename::pathsOf(present);
    const QStringList lost = BatchRename::lostPaths(m_editor.library());
    if (paths == m_paths && lost == m_lostPaths)
        return;
    m_photos = present;
    m_paths = paths;
    m_lostPaths = lost;
    enableRename();
}

const RenamePlan &PIRenameDialog::plan() const
{
    return m_preview->plan();
}

RenameSettings PIRenameDialog::settings() const
{
    RenameSettings settings{.style = static_cast<Style>(m_styleOptions->checkedId()),
                            .oldPrefix = m_oldPrefixField->text(),
                            .newPrefix = m_newPrefixField->text(),
                            .renumberFrom = m_renumberField->value(),
                            .extension = m_extensionField->text(),
                            .prefix = m_prefixField->text()};
    while (settings.extension.startsWith(u'.'))
        settings.extension.remove(0, 1); // as people write it
    if (m_completeOptions->checkedId() == FromNumber)
        settings.completeFrom = m_completeNumberField->value();
    return settings;
}

void PIRenameDialog::changeStyle()
{
    const auto style = static_cast<Style>(m_styleOptions->checkedId());
    m_oldPrefixField->setEnabled(style == Style::ReplacePrefix);
    m_newPrefixField->setEnabled(style == Style::ReplacePrefix);
    m_renumberField->setEnabled(style == Style::Renumber);
    m_extensionField->setEnabled(style == Style::Extension);
    for (QWidget *widget :
         std::initializer_list<QWidget *>{m_prefixField, m_completeOptions->button(AfterOthers),
                                          m_completeOptions->button(FromNumber), m_completeNumberField})
        widget->setEnabled(style == Style::NewNames);
    QWidget *const firstFields[] = {m_oldPrefixField, m_renumberField, m_extensionField, m_prefixField};
    firstFields[static_cast<int>(style)]->setFocus(Qt::TabFocusReason); // to be typed over
    enableRename();
}

void PIRenameDialog::enableRename()
{
    const RenameSettings chosen = settings();
    m_okButton->setEnabled(chosen.isComplete());
    m_isPressed = false; // that was for something else
    m_preview->showPlan(chosen, m_paths, m_lostPaths);
}

void PIRenameDialog::controlTextDidChange()
{
    m_completeOptions->button(FromNumber)->setChecked(true);
    enableRename();
}

void PIRenameDialog::rename()
{
    m_defaults.setValue(kStyle, m_styleOptions->checkedId());
    store(m_defaults, kExtension, m_extensionField->text());
    store(m_defaults, kNewPrefix, m_newPrefixField->text());
    store(m_defaults, kPrefix, m_prefixField->text());
    m_defaults.setValue(kComplete, m_completeOptions->checkedId());
    m_isPressed = true;
    acceptWhenPlanned();
}

/// Nothing is done that was not on show.
void PIRenameDialog::acceptWhenPlanned()
{
    if (m_isPressed && m_preview->isUpToDate())
        accept();
}

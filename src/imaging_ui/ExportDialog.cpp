#include "ExportDialog.h"

#include "ExportPreferences.h"
#include "PISaveFormatViewController.h"
#include "SaveImage.h"
#include "StringUtilities.h"

#include <QGridLayout>
#include <QLineEdit>

ExportDialog::ExportDialog(Target target, QWidget *parent)
    : QFileDialog(parent)
    , m_target(target)
    , m_panel(new PISaveFormatViewController({}, this))
{
    setOption(DontUseNativeDialog); // others have no room for the panel
    setWindowModality(Qt::WindowModal);
    if (target == Target::File) {
        setAcceptMode(AcceptSave);
        setFileMode(AnyFile);
    } else {
        setFileMode(Directory);
        setOption(ShowDirsOnly);
        setLabelText(Accept, tr("Export"));
    }
    setLabelText(target == Target::File ? LookIn : FileName, tr("Folder:"));
    hideFileTypes();
    addPanel();
    m_name = findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
    if (target == Target::Folder || !m_name)
        return;
    connect(m_panel, &PISaveFormatViewController::formatChanged, this, &ExportDialog::enforceFormat);
    connect(m_name, &QLineEdit::textChanged, this, &ExportDialog::followExtension);
}

/// The panel has the formats.
void ExportDialog::hideFileTypes()
{
    for (const char *name : {"fileTypeLabel", "fileTypeCombo"}) {
        if (auto *widget = findChild<QWidget *>(QLatin1String(name)))
            widget->hide();
    }
}

void ExportDialog::addPanel()
{
    m_panel->layout()->setContentsMargins(QMargins()); // the dialog has its own
    if (auto *grid = qobject_cast<QGridLayout *>(layout()))
        grid->addWidget(m_panel, grid->rowCount(), 0, 1, grid->columnCount());
    else if (layout())
        layout()->addWidget(m_panel);
}

void ExportDialog::suggestName(const QString &name)
{
    selectFile(pathForFormat(name, g_saveFormat));
}

QString ExportDialog::folder() const
{
    return m_target == Target::Folder ? path() : QFileInfo(path()).absolutePath();
}

void ExportDialog::enforceFormat(int format)
{
    const QString name = m_name->text();
    if (!name.isEmpty() && formatForExtension(QVString::pathExtension(name)) != format)
        m_name->setText(pathForFormat(name, format));
}

void ExportDialog::followExtension(const QString &name)
{
    if (const auto format = formatForExtension(QVString::pathExtension(name)))
        m_panel->setFormat(*format);
}

void ExportDialog::accept()
{
    // The name is put right before it is asked whether the file that bears it is to be replaced.
    if (m_target == Target::File && m_name && !m_name->text().isEmpty() && !QFileInfo(path()).isDir())
        m_name->setText(pathForFormat(m_name->text(), g_saveFormat));
    QFileDialog::accept();
}

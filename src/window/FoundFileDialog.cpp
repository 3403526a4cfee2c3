#include "FoundFileDialog.h"

#include "FormatMessage.h"
#include "GiveAlert.h"
#include "StringUtilities.h"

#include <QCoreApplication>
#include <QFileDialog>
#include <QFileSystemModel>
#include <QSortFilterProxyModel>

namespace {

/// Shows every file, but lets only those of one name be chosen; folders stay open to walk through.
class OneNameModel final : public QSortFilterProxyModel
{
public:
    OneNameModel(const QString &name, QObject *parent)
        : QSortFilterProxyModel(parent)
        , m_name(name)
    {}

    Qt::ItemFlags flags(const QModelIndex &index) const override
    {
        const Qt::ItemFlags flags = QSortFilterProxyModel::flags(index);
        const auto *files = qobject_cast<const QFileSystemModel *>(sourceModel());
        const QModelIndex source = mapToSource(index);
        const bool usable = !files || files->isDir(source) || files->fileName(source) == m_name;
        return usable ? flags : flags & ~(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    }

private:
    QString m_name;
};

/// Another name can still be typed: it is refused, and the user can go on looking.
class OneNameDialog final : public QFileDialog
{
public:
    OneNameDialog(const QString &name, const QString &title, const QString &folder, QWidget *parent)
        : QFileDialog(parent, title, folder)
        , m_name(name)
    {
        setWindowModality(Qt::WindowModal);
        setOption(DontUseNativeDialog); // only ours can hold files back
        setFileMode(ExistingFile);
        setProxyModel(new OneNameModel(name, this));
    }

protected:
    /// A folder has been entered by now, and what is not there refused.
    void done(int result) override
    {
        if (result == Accepted && QVString::lastPathComponent(selectedFiles().value(0)) != m_name)
            GiveAlert(
                QCoreApplication::translate("FoundFileDialog", "This is another file."),
                QCoreApplication::translate("FoundFileDialog", "Only a file named “%1” can be chosen.").arg(m_name));
        else
            QFileDialog::done(result);
    }

private:
    QString m_name;
};

}

QString askForFileNamed(const QString &name, const QString &folder, QWidget &window)
{
    const QString question =
        FormatMessage(QCoreApplication::translate("FoundFileDialog", "Where is \"%@\"?"), {MessageArgument(name)});
    OneNameDialog dialog(name, question, folder, &window);
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
}

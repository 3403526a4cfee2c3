#include "FoundFileDialog.h"

#include "DirectoryReader.h"
#include "FormatMessage.h"
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

}

namespace {

QString nearestFolder(QString folder)
{
    while (folder.size() > 1 && entryTypeAt(folder) != EntryType::Folder)
        folder = QVString::deletingLastPathComponent(folder);
    return folder;
}

}

QString askForFileNamed(const QString &name, const QString &folder, QWidget &window)
{
    const QString question =
        FormatMessage(QCoreApplication::translate("FoundFileDialog", "Where is \"%@\"?"), {MessageArgument(name)});
    QFileDialog dialog(&window, question, nearestFolder(folder));
    dialog.setWindowModality(Qt::WindowModal);
    dialog.setOption(QFileDialog::DontUseNativeDialog); // only ours can hold files back
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setProxyModel(new OneNameModel(name, &dialog));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return {};
    const QString path = dialog.selectedFiles().first();
    return QVString::lastPathComponent(path) == name ? path : QString(); // a name can also be typed
}

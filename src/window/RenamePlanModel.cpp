#include "RenamePlanModel.h"

#include "PlainText.h"
#include "StringUtilities.h"
#include "TextForPeople.h"

#include <QApplication>
#include <QPalette>
#include <QStyle>

#include <algorithm>

namespace {

using Obstacle = RenamePlan::Obstacle;

/// On one line, whatever characters that have no shape are in it.
QString shownName(QString name)
{
    static const QList<QChar::Category> kShapeless{QChar::Other_Control, QChar::Other_Format, QChar::Separator_Line,
                                                   QChar::Separator_Paragraph};
    for (QChar &character : name)
        if (kShapeless.contains(character.category()))
            character = QChar::ReplacementCharacter;
    return name;
}

QString oldName(const RenamePlan::Step &step)
{
    return shownName(QVString::lastPathComponent(step.oldPath));
}

/// With everything that was typed, also what leads elsewhere.
QString newName(const RenamePlan::Step &step)
{
    return shownName(step.newPath.mid(step.oldPath.lastIndexOf(u'/') + 1));
}

QString textOf(Obstacle obstacle)
{
    switch (obstacle) {
    case Obstacle::NoName:
        return RenamePlanModel::tr("Not a file name");
    case Obstacle::TooLong:
        return RenamePlanModel::tr("Name is too long");
    case Obstacle::Taken:
        return RenamePlanModel::tr("Name is taken");
    case Obstacle::SidecarTaken:
        return RenamePlanModel::tr("Sidecar's name is taken");
    case Obstacle::Reserved:
        return RenamePlanModel::tr("Name of a missing file");
    case Obstacle::Missing:
        return RenamePlanModel::tr("File is missing");
    case Obstacle::Unreadable:
        return RenamePlanModel::tr("Folder can't be read");
    case Obstacle::None:
        break;
    }
    return {};
}

QString noteOn(const RenamePlan::Step &step)
{
    if (step.obstacle != Obstacle::None)
        return textOf(step.obstacle);
    if (step.newPath.isEmpty())
        return RenamePlanModel::tr("Keeps its name");
    if (step.meetsSidecar)
        return RenamePlanModel::tr("Another sidecar has that name");
    return step.sidecars.isEmpty() ? QString() : RenamePlanModel::tr("With its sidecar");
}

}

void RenamePlanModel::setPlan(const RenamePlan &plan)
{
    beginResetModel();
    m_plan = plan;
    m_rows.clear();
    for (qsizetype i = 0; i < plan.steps().size(); ++i)
        if (!plan.steps().at(i).isMovedBefore)
            m_rows.append(i);
    endResetModel();
}

int RenamePlanModel::firstObstacle() const
{
    for (int row = 0; row < rowCount(); ++row)
        if (step(row).obstacle != Obstacle::None)
            return row;
    return -1;
}

QString RenamePlanModel::summary() const
{
    const auto count = [](qsizetype files) {
        return files == 0 ? tr("No file will be renamed")
                          : CountText(files, tr("%n file will be renamed"), tr("%n files will be renamed"));
    };
    const int obstacle = firstObstacle();
    if (obstacle < 0)
        return count(m_plan.renamedCount());
    return tr("%1. It ends at “%2”, which cannot be renamed.")
        .arg(count(m_plan.renamedBeforeObstacle()), oldName(step(obstacle)));
}

int RenamePlanModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int RenamePlanModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant RenamePlanModel::data(const QModelIndex &index, int role) const
{
    const RenamePlan::Step &shown = step(index.row());
    const bool isOld = index.column() == OldName || shown.newPath.isEmpty();
    if (role == Qt::DisplayRole && index.column() == Note)
        return noteOn(shown);
    if (role == Qt::DisplayRole)
        return isOld ? oldName(shown) : newName(shown);
    if (role == Qt::DecorationRole && index.column() == Note && shown.obstacle != Obstacle::None)
        return QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning);
    if (role == Qt::ForegroundRole && shown.newPath.isEmpty())
        return QApplication::palette().brush(QPalette::PlaceholderText);
    if (role == Qt::ToolTipRole && index.column() == Note)
        return shown.obstacle == Obstacle::Unreadable ? plainText(shown.detail) : QString();
    if (role == Qt::ToolTipRole)
        return plainText(QVString::abbreviateHomeFolderPath(isOld ? shown.oldPath : shown.newPath));
    return {};
}

QVariant RenamePlanModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    const QString titles[ColumnCount] = {tr("Now"), tr("New Name"), QString()};
    return titles[section];
}

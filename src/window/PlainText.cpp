#include "PlainText.h"

#include <QTextDocument>

QString plainText(const QString &text)
{
    if (!Qt::mightBeRichText(text))
        return text;
    const QString escaped = text.toHtmlEscaped().replace(u'\n', QStringLiteral("<br>"));
    return QStringLiteral("<qt>%1</qt>").arg(escaped);
}

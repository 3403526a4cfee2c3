#pragma once

#include <QList>
#include <QString>

#include <type_traits>

/// One value for FormatMessage: a text or a number.
class MessageArgument
{
public:
    MessageArgument(const QString &text)
        : m_text(text)
        , m_isNumber(false)
    {}
    template<typename T, typename = std::enable_if_t<std::is_integral_v<T>>>
    MessageArgument(T number)
        : m_number(static_cast<qint64>(number))
        , m_isNumber(true)
    {}

    /// The value as `conversion` ('@', 'd' or 'x') shows it.
    [[nodiscard]] QString text(QChar conversion, int width, bool zeroPadded) const;

private:
    QString m_text;
    qint64 m_number = 0;
    bool m_isNumber = false;
};

/// Fills a template: "%@" takes any argument's text, "%d" a decimal, "%x" a lower-case hexadecimal number (with an
/// optional width such as "%02d"), "%%" a percent sign. Arguments are not scanned again. A conversion without an
/// argument shows as "(null)".
[[nodiscard]] QString FormatMessage(const QString &format, const QList<MessageArgument> &arguments);

#pragma once

#include <QList>
#include <QString>

#include <type_traits>
#include <variant>

/// One value for FormatMessage: a text or a number.
class MessageArgument
{
public:
    MessageArgument(const QString &text)
        : m_value(text)
    {}
    template<typename T, typename = std::enable_if_t<std::is_arithmetic_v<T>>>
    MessageArgument(T number)
    {
        if constexpr (std::is_floating_point_v<T>)
            m_value = static_cast<double>(number);
        else
            m_value = static_cast<qint64>(number);
    }

    /// The value as `conversion` ('@' or one of printf's letters) shows it, with printf's `flags`, width and precision.
    [[nodiscard]] QString text(QChar conversion, const QByteArray &flags) const;

private:
    std::variant<QString, qint64, double> m_value;
};

/// Fills a template: "%@" takes any argument's text, the other conversions are those of printf, of which the length
/// letters are passed over, and "%%" is a percent sign. Arguments are not scanned again. A number shows as a number
/// whatever conversion asks for it, and a text as a text. A conversion without an argument shows as "(null)".
[[nodiscard]] QString FormatMessage(const QString &format, const QList<MessageArgument> &arguments);

#include "NumberList.h"

#include <array>
#include <charconv>
#include <limits>

qint64 NumberList::numberAtFront(QStringView text)
{
    const bool negative = text.startsWith(u'-');
    qint64 number = 0;
    for (const QChar unit : text.sliced(negative ? 1 : 0)) {
        const int digit = unit.unicode() - u'0';
        if (digit < 0 || digit > 9)
            break;
        if (__builtin_mul_overflow(number, 10, &number) || __builtin_add_overflow(number, digit, &number))
            return negative ? std::numeric_limits<qint64>::min() : std::numeric_limits<qint64>::max();
    }
    return negative ? -number : number;
}

void NumberList::append(QString &text, quint64 number)
{
    std::array<char, 21> buffer;
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    if (!text.isEmpty())
        text.append(u' ');
    text.append(QLatin1String(buffer.data(), end.ptr - buffer.data()));
}

#include "QVAsyncOperation.h"

#include "LogString.h"

#include <exception>

void QVAsyncOperation::run()
{
    m_working = true;
    bool success = false;
    try {
        success = performOperation();
    } catch (const std::exception &exception) {
        LogException(QString::fromUtf8(exception.what()),
                     FormatMessage(QStringLiteral("Operation %@ failed"), {operationName()}));
    }
    m_working = false;
    operationFinished(success);
}

void QVAsyncOperation::operationFinished(bool) {}

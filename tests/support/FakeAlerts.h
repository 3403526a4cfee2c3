#pragma once

#include "AlertPresenter.h"

#include <QStringList>

/// Answers every alert with the same button and remembers what was said.
struct FakeAlerts final : AlertPresenter
{
    FakeAlerts() { install(this); }
    ~FakeAlerts() override { install(nullptr); }
    int present(const Alert &alert) override
    {
        said << alert.title;
        messages << alert.message;
        return answer;
    }
    void beep() override { ++beeps; }
    QStringList said; ///< titles
    QStringList messages;
    int answer = 0;
    int beeps = 0;
};

#pragma once

#include <QObject>

#include <functional>
#include <memory>

/// Makes a test class known to the executable's main(), which runs every class in turn with its own XDG folders.
struct RegisteredTest
{
    using Maker = std::function<std::unique_ptr<QObject>()>;
    explicit RegisteredTest(Maker maker);
};

#define REGISTER_TEST(Class) static const RegisteredTest registered##Class([] { return std::make_unique<Class>(); });

/// The folder of test pictures shared by the developers; empty where it is absent, and the test is to be skipped.
[[nodiscard]] QString corpusFolder();

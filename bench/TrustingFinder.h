#pragma once

#include "FileFinder.h"

/// Knows every file to be where it was, without asking the disk: that is measured elsewhere.
class TrustingFinder final : public FileFinder
{
public:
    FoundFile locate(const QString &, const QString &path) override { return {true, path}; }
    FoundFile relocate(const QString &, const QString &path) override { return {true, path}; }
    void trimUnusedFiles(const QStringList &) override {}
};

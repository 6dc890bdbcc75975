#pragma once

#include "ui/presentation/FileChooser.h"

namespace orvane::test {

/// A user who chooses the same path whatever is asked for.
class FakeFileChooser : public FileChooser
{
public:
    QCoro::Task<QList<QUrl>> media() override { co_return {QUrl::fromLocalFile(path)}; }
    QCoro::Task<QString> model() override { co_return QString(path); }
    QCoro::Task<QString> target(QString suggestion) override
    {
        suggested = suggestion;
        co_return QString(path);
    }
    QCoro::Task<QString> folder() override { co_return QString(path); }

    QString path;
    QString suggested;
};

} // namespace orvane::test

#pragma once

#include "history/HistoryStore.h"

#include <QCoroTask>

/// What commands that work on records share.
namespace orvane::HistoryAccess {

/// The record whose id begins with these characters. Throws Error unless there is exactly one.
[[nodiscard]] QCoro::Task<TranscriptRecord> recordNamed(HistoryStore *history, QString id);

/// Returns when every change is on disk; throws Error when one could not be written.
[[nodiscard]] QCoro::Task<> untilSaved(HistoryStore *history);

} // namespace orvane::HistoryAccess

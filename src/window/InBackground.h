#pragma once

#include "DispatchQueue.h"

#include <QObject>
#include <QPointer>

#include <utility>

/// Runs `work` on the queue and hands what it returns to `done` on the main thread, unless `context` is gone by then.
template<typename Work, typename Done>
void inBackground(DispatchQueue &queue, QObject *context, Work work, Done done)
{
    queue.async([work = std::move(work), done = std::move(done), guard = QPointer<QObject>(context)] {
        runOnMain([result = work(), done, guard] {
            if (guard)
                done(result);
        });
    });
}

#pragma once

#include "DispatchQueue.h"
#include "EffectChain.h"
#include "Image.h"
#include "MainThreadLink.h"

#include <QImage>
#include <QSize>

#include <atomic>
#include <functional>
#include <memory>

/// Shows what effects do to one picture while they are tried. The picture is decoded once for the size at which it is
/// shown, and each chain is rendered from those pixels in the background. One rendering runs at a time and the newest
/// chain is the next, so that a value that changes quickly is followed without a queue. Main thread.
class ChainRenderer
{
public:
    struct Rendering
    {
        QImage original; ///< without the effects; null when the picture cannot be read
        QImage filtered; ///< the same as `original` when an effect fails
    };
    using Done = std::function<void(const Rendering &)>;
    /// Opens the picture without the effects; called on another thread.
    using Open = std::function<Image()>;

    /// `done` is called for every rendering that ends while it is wanted.
    explicit ChainRenderer(Done done);
    ~ChainRenderer();
    ChainRenderer(const ChainRenderer &) = delete;
    ChainRenderer &operator=(const ChainRenderer &) = delete;

    void setPicture(Open open);
    /// The picture is rendered to fit into `box` (pixels), never enlarged. Nothing is rendered before there is one.
    void setBox(QSize box);
    void setChain(const EffectChain &chain);

private:
    struct Picture;

    /// Set from outside to end what is under way.
    struct Cancelled
    {
        std::atomic<bool> decoding = false;
        std::atomic<bool> filtering = false;
    };

    void cancelAll();
    void renderAnew();
    void start();
    void finished(const Rendering &rendering, bool isWanted);

    Done m_done;
    std::shared_ptr<Picture> m_picture;
    QSize m_box;
    EffectChain m_chain;
    EffectChain m_runningChain;
    std::shared_ptr<Cancelled> m_running; ///< null when nothing is under way
    bool m_isPending = false;
    MainThreadLink<ChainRenderer> m_link{*this};
    DispatchQueue m_queue; ///< last: its blocks end first
};

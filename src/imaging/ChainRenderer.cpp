#include "ChainRenderer.h"

#include "FilterBackEnd.h"
#include "LogString.h"

#include <algorithm>
#include <exception>

/// Used by one block of the queue at a time.
struct ChainRenderer::Picture
{
    Open open;
    Image image; ///< null until it is open
    QImage pixels;

    [[nodiscard]] Rendering render(const EffectChain &chain, QSize box, const Cancelled &cancelled);
    void decode(QSize box, const Cancelled &cancelled);
};

void ChainRenderer::Picture::decode(QSize box, const Cancelled &cancelled)
{
    if (image.isNull())
        image = open();
    const QSize size = image.isNull() ? QSize() : CenterRectangle(image.size(), box);
    if (!image.isNull() && pixels.size() != size)
        pixels = image.pixels(size, &cancelled.decoding).value_or(QImage());
    if (pixels.isNull() && !cancelled.decoding)
        image = {}; // a file that changed is opened anew next time
}

ChainRenderer::Rendering ChainRenderer::Picture::render(const EffectChain &chain, QSize box, const Cancelled &cancelled)
{
    decode(box, cancelled);
    if (pixels.isNull())
        return {};
    const FilterContext context{double(pixels.width()) / image.size().width(), &cancelled.filtering};
    return {pixels, EvaluateChain(chain, pixels, filterBackEnd(), context).value_or(pixels)};
}

ChainRenderer::ChainRenderer(Done done)
    : m_done(std::move(done))
    , m_queue(QStringLiteral("hmphoto.effects"), 1, DispatchQueue::AtEnd::LeaveBehind)
{}

ChainRenderer::~ChainRenderer()
{
    cancelAll();
}

void ChainRenderer::cancelAll()
{
    if (!m_running)
        return;
    m_running->decoding = true;
    m_running->filtering = true;
}

void ChainRenderer::setPicture(Open open)
{
    m_picture = std::make_shared<Picture>();
    m_picture->open = std::move(open);
    cancelAll();
    renderAnew();
}

void ChainRenderer::setBox(QSize box)
{
    if (box == m_box)
        return;
    m_box = box;
    cancelAll();
    renderAnew();
}

namespace {

bool haveSameFilters(const EffectChain &a, const EffectChain &b)
{
    return std::equal(a.cbegin(), a.cend(), b.cbegin(), b.cend(),
                      [](const EffectEntry &x, const EffectEntry &y) { return x.filterName() == y.filterName(); });
}

}

/// A rendering under way is shown when the next differs in its values alone: while a slider is being dragged, a slow
/// effect would show nothing otherwise.
void ChainRenderer::setChain(const EffectChain &chain)
{
    m_chain = chain;
    if (m_running && !haveSameFilters(chain, m_runningChain))
        m_running->filtering = true; // the decoded picture serves the next
    renderAnew();
}

void ChainRenderer::renderAnew()
{
    m_isPending = m_picture && !m_box.isEmpty();
    if (m_isPending && !m_running)
        start();
}

void ChainRenderer::start()
{
    m_isPending = false;
    m_running = std::make_shared<Cancelled>();
    m_runningChain = m_chain;
    m_queue.async([picture = m_picture, chain = m_chain, box = m_box, cancelled = m_running, toHere = m_link.toHere()] {
        Rendering rendering;
        try {
            rendering = picture->render(chain, box, *cancelled);
        } catch (const std::exception &error) {
            LogString("No preview of the effects: %@", QString::fromUtf8(error.what()));
        }
        toHere([rendering, cancelled](ChainRenderer &here) { here.finished(rendering, !cancelled->filtering); });
    });
}

void ChainRenderer::finished(const Rendering &rendering, bool isWanted)
{
    m_running.reset();
    if (m_isPending)
        start();
    if (isWanted)
        m_done(rendering);
}

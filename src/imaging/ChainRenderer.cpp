#include "ChainRenderer.h"

#include "FilterBackEnd.h"

#include <algorithm>

/// Used by one block of the queue at a time.
struct ChainRenderer::Picture
{
    Open open;
    Image image; ///< null until it is open
    QImage pixels;

    [[nodiscard]] Rendering render(const EffectChain &chain, QSize box, const std::atomic<bool> &cancelled);
};

ChainRenderer::Rendering ChainRenderer::Picture::render(const EffectChain &chain, QSize box,
                                                        const std::atomic<bool> &cancelled)
{
    if (image.isNull())
        image = open();
    if (image.isNull())
        return {};
    const QSize size = CenterRectangle(image.size(), box);
    if (pixels.size() != size)
        pixels = image.pixels(size, &cancelled).value_or(QImage());
    if (pixels.isNull())
        return {};
    const FilterContext context{double(size.width()) / image.size().width(), &cancelled};
    return {pixels, EvaluateChain(chain, pixels, filterBackEnd(), context).value_or(pixels)};
}

ChainRenderer::ChainRenderer(Done done)
    : m_done(std::move(done))
    , m_queue(QStringLiteral("hmphoto.effects"), 1, DispatchQueue::AtEnd::LeaveBehind)
{}

ChainRenderer::~ChainRenderer()
{
    if (m_running)
        *m_running = true;
}

void ChainRenderer::setPicture(Open open)
{
    m_picture = std::make_shared<Picture>();
    m_picture->open = std::move(open);
    if (m_running)
        *m_running = true;
    renderAnew();
}

void ChainRenderer::setBox(QSize box)
{
    if (box == m_box)
        return;
    m_box = box;
    if (m_running)
        *m_running = true;
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
        *m_running = true;
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
    m_running = std::make_shared<std::atomic<bool>>(false);
    m_runningChain = m_chain;
    m_queue.async([picture = m_picture, chain = m_chain, box = m_box, cancelled = m_running, toHere = m_link.toHere()] {
        toHere([rendering = picture->render(chain, box, *cancelled), cancelled](ChainRenderer &here) {
            here.finished(rendering, !*cancelled);
        });
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

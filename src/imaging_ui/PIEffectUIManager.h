#pragma once

#include "EffectEdits.h"

#include <QImage>
#include <QObject>
#include <QStringList>

class QFormLayout;
class QVCoordinateView;
class QWidget;

/// Turns filters of a photo's chain into controls, in a view that it fills, and writes every change of a control back
/// into the chain.
class PIEffectUIManager final : public QObject
{
    Q_OBJECT

public:
    /// All outlive it but for the view, which becomes its parent and is to have no layout. The delegate is told of
    /// each change.
    PIEffectUIManager(QWidget &view, const FilterCatalogue &catalogue, EffectDelegate &delegate);

    /// Whose chain the controls change.
    void setPhoto(const std::shared_ptr<PIPhoto> &photo) { m_edits.setPhoto(photo); }
    /// Buttons that remove and reset the effect.
    void setIncludeCommonControls(bool include) { m_includeCommonControls = include; }
    /// A field for each number beside its slider.
    void setIncludeTextFields(bool include) { m_includeTextFields = include; }
    /// What coordinate pickers show.
    void setPicture(const QImage &picture);
    /// Whether a control on show is a coordinate picker.
    [[nodiscard]] bool hasPickers() const { return !m_pickers.isEmpty(); }
    [[nodiscard]] EffectEdits &edits() { return m_edits; }

    void removeControls();
    /// Adds the controls of one filter beneath those there are. A filter that is not offered gets its name alone.
    void addFilterControl(const EffectEntry &values);
    /// The controls of a whole chain, as far as it is rendered; an entry whose filter stands above it already gets its
    /// name alone. When the view has just these filters' controls already, they show the new values.
    void setFilterUIFrom(const EffectChain &values);

Q_SIGNALS:
    /// A slider was let go, a field left: what is changed next is another matter.
    void changeEnded();

private:
    void addCommonControls(const EffectEntry &entry, QFormLayout &form);
    [[nodiscard]] QWidget *controlFor(const FilterInput &input, int controlTag);
    [[nodiscard]] QWidget *numberControl(const FilterInput &input, int controlTag);
    [[nodiscard]] QWidget *colorWell(const FilterInput &input, int controlTag);
    [[nodiscard]] QWidget *coordinateView(const FilterInput &input, int controlTag);
    void showValues(const EffectEntry &entry);
    void changed(int controlTag, const EffectValue &value);

    QWidget &m_view;
    const FilterCatalogue &m_catalogue;
    EffectEdits m_edits;
    bool m_includeCommonControls = false;
    bool m_includeTextFields = false;
    QImage m_picture;
    QStringList m_filters; ///< those with controls, in their order
    /// By control tag: shows a value in the control.
    QHash<int, std::function<void(const EffectValue &)>> m_show;
    QList<QVCoordinateView *> m_pickers;
    QWidget *m_body = nullptr; ///< holds the controls; null when there are none
};

#pragma once

#include <QWidget>
#include <map>
#include <vector>

#include "UiContext.h"

class QLabel;
class QPushButton;
class QScrollArea;
class QVBoxLayout;

namespace lumora::ui {

class DisplayCard;
class AdaptiveSection;
class KeysSection;
class LidSection;
class ModelWatcher;
class VirtualSection;

// The content of the menu-bar panel: the header with the lid state, one card per display,
// the virtual-screen, keys and lid sections, and the footer. Follows the model on its own:
// after each change it updates every control in place and rebuilds only the cards whose
// display changed shape.
class MenuPanel : public QWidget {
  public:
    static constexpr int kMaxSectionsHeight = 640;

    explicit MenuPanel(UiContext context, QWidget* parent = nullptr);
    ~MenuPanel() override;

    // The panel's width, and the height its wrapped texts need at that width.
    [[nodiscard]] QSize sizeHint() const override;

    // Reads the whole model now; normally this runs by itself after each model change.
    void updateFromModel();

    // The height the panel may take on screen. When everything fits the sections are shown
    // as they are; otherwise inside a scroll area of at most kMaxSectionsHeight. Defaults to
    // the primary screen's available height.
    void setAvailableHeight(int height);
    [[nodiscard]] bool scrolling() const { return scroll_ != nullptr; }
    [[nodiscard]] QScrollArea* scrollArea() const { return scroll_; }

    [[nodiscard]] QLabel* lidLabel() const { return lidText_; }
    // The symbol name the header shows for the lid.
    [[nodiscard]] QString lidSymbolName() const;
    [[nodiscard]] std::vector<DisplayCard*> cards() const;
    [[nodiscard]] DisplayCard* card(DisplayID id) const;
    [[nodiscard]] VirtualSection* virtualSection() const { return virtual_; }
    [[nodiscard]] AdaptiveSection* adaptiveSection() const { return adaptive_; }
    [[nodiscard]] KeysSection* keysSection() const { return keys_; }
    [[nodiscard]] LidSection* lidSection() const { return lid_; }
    [[nodiscard]] QPushButton* logButton() const { return log_; }
    [[nodiscard]] QPushButton* refreshButton() const { return refresh_; }
    [[nodiscard]] QPushButton* quitButton() const { return quit_; }

  private:
    void buildHeader(QVBoxLayout* layout);
    void buildFooter(QVBoxLayout* layout);
    void updateHeader();
    void updateCards();
    void fitOrScroll();
    [[nodiscard]] int naturalSectionsHeight() const;

    UiContext context_;
    QLabel* lidIcon_ = nullptr;
    QLabel* lidText_ = nullptr;
    QVBoxLayout* outer_ = nullptr;
    QWidget* sections_ = nullptr;
    QVBoxLayout* sectionsLayout_ = nullptr;
    QScrollArea* scroll_ = nullptr;
    std::vector<DisplayCard*> cards_;  // in the model's order
    VirtualSection* virtual_ = nullptr;
    AdaptiveSection* adaptive_ = nullptr;
    KeysSection* keys_ = nullptr;
    LidSection* lid_ = nullptr;
    QPushButton* log_ = nullptr;
    QPushButton* refresh_ = nullptr;
    QPushButton* quit_ = nullptr;
    int availableHeight_ = 0;
    ModelWatcher* watcher_ = nullptr;
};

}  // namespace lumora::ui

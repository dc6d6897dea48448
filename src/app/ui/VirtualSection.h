#pragma once

#include <QFrame>
#include <vector>

#include "UiContext.h"

class QCheckBox;
class QLabel;
class QMenu;
class QPushButton;
class QToolButton;
class QVBoxLayout;

namespace lumora::ui {

class Switch;

// "Виртуальные экраны": the HiDPI choice for new screens, the "Добавить" menu of sizes, and one
// row per screen definition with its switch, name, size and a delete button.
class VirtualSection : public QFrame {
  public:
    explicit VirtualSection(UiContext& context, QWidget* parent = nullptr);

    void updateValues();

    [[nodiscard]] QCheckBox* hidpiBox() const { return hidpi_; }
    [[nodiscard]] QPushButton* addButton() const { return add_; }
    [[nodiscard]] QMenu* addMenu() const { return addMenu_; }
    [[nodiscard]] QLabel* unavailableLabel() const { return unavailable_; }
    // One per definition, in the manager's order.
    [[nodiscard]] const std::vector<QWidget*>& rows() const { return rows_; }

  private:
    struct RowKey {
        std::uint32_t id;
        std::string name;
        std::int64_t width;
        std::int64_t height;
        bool hiDPI;
        friend bool operator==(const RowKey&, const RowKey&) = default;
    };

    void rebuildRows(const std::vector<VirtualScreenConfig>& configs);
    QWidget* makeRow(const VirtualScreenConfig& config);
    // After every change: the display list gains or loses the screen.
    void changed();

    UiContext& context_;
    QCheckBox* hidpi_ = nullptr;
    QPushButton* add_ = nullptr;
    QMenu* addMenu_ = nullptr;
    QLabel* unavailable_ = nullptr;
    QVBoxLayout* rowsLayout_ = nullptr;
    std::vector<QWidget*> rows_;
    std::vector<Switch*> switches_;
    std::vector<RowKey> keys_;
};

}  // namespace lumora::ui

// The current tool and the tools' settings. One per application; the settings are global, and each document
// also remembers the chosen tool and group members. Main thread only. Every change of tool posts
// `toolChanged`.
#pragma once

#include <QHash>
#include <QProperty>
#include <QString>
#include <memory>
#include <vector>

#include "model/Document.h"
#include "model/Tool.h"
#include "tools/ToolSlot.h"

namespace orvanel {

/// Lengths are in document pixels; `hardness`, `flow` and `spacing` run from 0 to 1.
struct BrushSettings {
  float size = 20.0F;
  float hardness = 0.8F;
  float flow = 1.0F;
  float spacing = 0.1F;
  friend bool operator==(const BrushSettings&, const BrushSettings&) = default;
};

struct EraserSettings {
  float size = 20.0F;
  float hardness = 0.8F;
  float flow = 1.0F;
  friend bool operator==(const EraserSettings&, const EraserSettings&) = default;
};

struct SelectionSettings {
  float featherRadius = 0.0F;  ///< document pixels
  friend bool operator==(const SelectionSettings&, const SelectionSettings&) = default;
};

struct MagicWandSettings {
  float tolerance = 32.0F;  ///< 8-bit steps
  bool contiguous = true;
  bool antialiased = true;
  bool sampleAllLayers = false;
  friend bool operator==(const MagicWandSettings&, const MagicWandSettings&) = default;
};

struct ZoomSettings {
  bool scrubbyZoom = false;
  friend bool operator==(const ZoomSettings&, const ZoomSettings&) = default;
};

class ToolState {
 public:
  ToolState() = default;
  ToolState(const ToolState&) = delete;
  ToolState& operator=(const ToolState&) = delete;

  /// The last element is the current tool; those before it resume when temporary tools end.
  QProperty<std::vector<Tool>> toolStack{std::vector{Tool::hand}};
  /// The last chosen member of each group, keyed by the slot's identity.
  QProperty<QHash<QString, Tool>> selectedVariants;
  QProperty<BrushSettings> brushSettings;
  QProperty<EraserSettings> eraserSettings;
  QProperty<SelectionSettings> selectionSettings;
  QProperty<MagicWandSettings> magicWandSettings;
  QProperty<ZoomSettings> zoomSettings;

  /// Held weakly; null if no document is active or it has been closed.
  [[nodiscard]] std::shared_ptr<Document> activeDocument() const { return activeDocument_.lock(); }
  void setActiveDocument(const std::shared_ptr<Document>& document) { activeDocument_ = document; }
  /// Makes the document (or none) active and restores its group members and its tool.
  void switchToDocument(const std::shared_ptr<Document>& document);

  [[nodiscard]] Tool currentTool() const;
  /// Makes a tool current, ends temporary ones and stores the choice in the active document.
  void selectTool(Tool tool);
  /// Activates a temporary tool, until `popTool` or any `selectTool`; documents don't remember it.
  void pushTool(Tool tool);
  void popTool();
  void setToolStack(std::vector<Tool> stack) { toolStack = std::move(stack); }

  /// Handles a click on the slot or its key: the current group advances to its next member, any other group
  /// resumes its last one.
  void activateSlot(const ToolSlot& slot);
  /// Chooses a member of a group from its menu.
  void selectVariant(const ToolSlot& slot, Tool tool);
  /// The tool shown in the slot.
  [[nodiscard]] Tool shownTool(const ToolSlot& slot) const;

 private:
  std::weak_ptr<Document> activeDocument_;
};

}  // namespace orvanel

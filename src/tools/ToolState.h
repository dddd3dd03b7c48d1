// Which tool is in force and how the tools are set. One for the application; the settings are global, the
// choice of tool and of group members is also remembered by each document. Main thread only.
// Every change of tool posts `toolChanged`.
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

/// Document pixels; `hardness`, `flow` and `spacing` run from 0 to 1.
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

  /// The last element is the tool in force; those before it wait for temporary tools to end.
  QProperty<std::vector<Tool>> toolStack{std::vector{Tool::hand}};
  /// The member last chosen of each group, by the slot's identity.
  QProperty<QHash<QString, Tool>> selectedVariants;
  QProperty<BrushSettings> brushSettings;
  QProperty<EraserSettings> eraserSettings;
  QProperty<SelectionSettings> selectionSettings;
  QProperty<MagicWandSettings> magicWandSettings;
  QProperty<ZoomSettings> zoomSettings;

  /// Held weakly: null when none is active or it has been closed.
  [[nodiscard]] std::shared_ptr<Document> activeDocument() const { return activeDocument_.lock(); }
  void setActiveDocument(const std::shared_ptr<Document>& document) { activeDocument_ = document; }
  /// Makes the document (or none) active and takes over its group members, then its tool.
  void switchToDocument(const std::shared_ptr<Document>& document);

  [[nodiscard]] Tool currentTool() const;
  /// Makes a tool permanent, ends temporary ones and has the active document remember the choice.
  void selectTool(Tool tool);
  /// A temporary tool, until `popTool` or any `selectTool`; documents don't remember it.
  void pushTool(Tool tool);
  void popTool();
  void setToolStack(std::vector<Tool> stack) { toolStack = std::move(stack); }

  /// A click on the slot or its key: a group that is in force steps to its next member, any other group
  /// comes back with its last one.
  void activateSlot(const ToolSlot& slot);
  /// Chooses a member of a group from its menu.
  void selectVariant(const ToolSlot& slot, Tool tool);
  /// The tool that the slot shows.
  [[nodiscard]] Tool shownTool(const ToolSlot& slot) const;

 private:
  std::weak_ptr<Document> activeDocument_;
};

}  // namespace orvanel

#include "app/WindowState.h"

#include <algorithm>
#include <set>

#include "app/TypedText.h"
#include "look/TranslatedName.h"

namespace orvanel {

DocumentPtr WindowState::findDocument(const QUuid& documentID) const {
  const auto& open = documents.value();
  const auto found = std::find_if(open.begin(), open.end(),
                                  [&](const DocumentPtr& document) { return document->id == documentID; });
  return found == open.end() ? nullptr : *found;
}

DocumentPtr WindowState::activeDocument() const {
  const auto& active = activeDocumentID.value();
  return active ? findDocument(*active) : nullptr;
}

QString WindowState::uniqueDocumentName(const QString& base) const {
  std::set<QString> taken;
  for (const DocumentPtr& document : documents.value()) taken.insert(document->name.value());
  QString candidate = base;
  for (int number = 2; taken.contains(candidate); ++number) {
    candidate = QStringLiteral("%1 %2").arg(base).arg(number);
  }
  return candidate;
}

void WindowState::createDocument(const QString& name, int width, int height, ColorMode colorMode) {
  addDocument(Document::create(uniqueDocumentName(name), width, height, colorMode, context_));
}

void WindowState::createUntitledDocument() {
  const QString name = look::translatedName(QStringLiteral("Untitled"));
  if (const DocumentPtr active = activeDocument()) {
    createDocument(name, active->canvasWidth.value(), active->canvasHeight.value(),
                   active->colorMode.value());
  } else {
    createDocument(name, 1024, 768, ColorMode::rgb16);
  }
}

void WindowState::addDocument(const DocumentPtr& document) {
  auto open = documents.value();
  open.push_back(document);
  notifications_.try_emplace(document->id, *document);
  documents = std::move(open);
  activeDocumentID = document->id;
  promoteToMRUFront(document->id);
  // The tool state adopts the variants before the tool, so that the tool is selected with its variant in
  // place.
  adoptActiveDocument();
}

void WindowState::promoteToMRUFront(const QUuid& documentID) {
  auto order = mruOrder.value();
  std::erase(order, documentID);
  order.insert(order.begin(), documentID);
  mruOrder = std::move(order);
}

void WindowState::switchToDocument(const QUuid& documentID) {
  if (!findDocument(documentID)) return;
  activeDocumentID = documentID;
  promoteToMRUFront(documentID);
  adoptActiveDocument();
}

void WindowState::setAsideActiveDocument() {
  activeDocumentID = std::nullopt;
  adoptActiveDocument();
}

bool WindowState::cycleNextDocument() {
  return cycleDocuments(CycleTarget::secondNewest);
}

bool WindowState::cyclePreviousDocument() {
  return cycleDocuments(CycleTarget::oldest);
}

bool WindowState::cycleDocuments(CycleTarget direction) {
  if (mruOrder.value().size() < 2) return false;
  if (const DocumentPtr active = activeDocument()) promoteToMRUFront(active->id);
  const auto& order = mruOrder.value();
  const QUuid target = direction == CycleTarget::secondNewest ? order[1] : order.back();
  activeDocumentID = target;
  promoteToMRUFront(target);
  adoptActiveDocument();
  return true;
}

bool WindowState::cycleNextTab() {
  return cycleTabs(+1);
}

bool WindowState::cyclePreviousTab() {
  return cycleTabs(-1);
}

bool WindowState::cycleTabs(int step) {
  const auto& open = documents.value();
  const DocumentPtr active = activeDocument();
  if (open.size() < 2 || !active) return false;
  const auto count = static_cast<std::ptrdiff_t>(open.size());
  const auto index = std::find(open.begin(), open.end(), active) - open.begin();
  switchToDocument(open[static_cast<std::size_t>((index + step + count) % count)]->id);
  return true;
}

bool WindowState::mayClose(const DocumentPtr& document) {
  keepTypedText();
  document->endOpenEdits();
  if (settleSaves) settleSaves(*document);
  return !document->isDirty.value() || !confirmClosing || confirmClosing(document);
}

void WindowState::removeDocument(const QUuid& documentID) {
  auto open = documents.value();
  std::erase_if(open, [&](const DocumentPtr& document) { return document->id == documentID; });
  auto order = mruOrder.value();
  std::erase(order, documentID);
  notifications_.erase(documentID);
  documents = std::move(open);
  mruOrder = std::move(order);
}

void WindowState::closeDocument(const QUuid& documentID) {
  const DocumentPtr document = findDocument(documentID);
  if (!document || !mayClose(document)) return;
  removeDocument(documentID);
  if (activeDocumentID.value() != documentID) return;
  const auto& order = mruOrder.value();
  activeDocumentID = order.empty() ? std::nullopt : std::optional(order.front());
  adoptActiveDocument();
}

bool WindowState::confirmAll(const std::function<bool(const Document&)>& isGivenUp) {
  std::set<QUuid> asked;
  // A document that opens while a question is shown is asked about as well.
  while (true) {
    const auto open = documents.value();
    const auto next = std::ranges::find_if(
        open, [&](const DocumentPtr& document) { return !asked.contains(document->id); });
    if (next == open.end()) return true;
    const DocumentPtr& document = *next;
    asked.insert(document->id);
    const bool needsNoQuestion = isGivenUp && isGivenUp(*document);
    if (!needsNoQuestion && !mayClose(document)) return false;
  }
}

void WindowState::closeAllDocuments() {
  // A file that finishes opening while a question is shown was not part of the request and stays open.
  const auto asked = documents.value();
  const auto mayCloseIt = [this](const DocumentPtr& document) { return mayClose(document); };
  if (!std::ranges::all_of(asked, mayCloseIt)) return;
  for (const DocumentPtr& document : asked) removeDocument(document->id);
  const auto& order = mruOrder.value();
  activeDocumentID = order.empty() ? std::nullopt : std::optional(order.front());
  adoptActiveDocument();
}

void WindowState::closeOtherDocuments(const QUuid& keptID) {
  auto others = documents.value();
  std::erase_if(others, [&](const DocumentPtr& document) { return document->id == keptID; });
  for (const DocumentPtr& document : others) {
    if (!mayClose(document)) return;
  }
  for (const DocumentPtr& document : others) removeDocument(document->id);
  if (activeDocumentID.value() == keptID) return;
  activeDocumentID = keptID;
  adoptActiveDocument();
}

}  // namespace orvanel

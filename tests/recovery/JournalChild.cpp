#include "recovery/JournalChild.h"

#include <unistd.h>

#include <QCoreApplication>
#include <QCryptographicHash>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "recovery/Recovery.h"
#include "tools/HistoryOracle.h"
#include "tools/RandomCommands.h"

namespace orvanel::testing {
namespace {

constexpr std::array modes{ColorMode::grayscale8, ColorMode::grayscale16, ColorMode::rgb8, ColorMode::rgb16};

void tell(const Document& document, QByteArray& last) {
  const QByteArray now = fingerprintOf(document);
  if (now == last) return;
  last = now;
  StateReport report{.time = sharedClock()};
  std::memcpy(report.fingerprint, now.constData(), fingerprintBytes);
  if (::write(STDOUT_FILENO, &report, sizeof report) != sizeof report) std::_Exit(2);
}

}  // namespace

QByteArray fingerprintOf(const Document& document) {
  const test::DocumentState state = test::DocumentState::of(document);
  QCryptographicHash hash(QCryptographicHash::Sha1);
  hash.addData(state.outline.toUtf8());
  for (const std::vector<std::byte>& pixels : state.pixels) {
    hash.addData(QByteArray::fromRawData(reinterpret_cast<const char*>(pixels.data()),
                                         static_cast<qsizetype>(pixels.size())));
  }
  return hash.result();
}

std::int64_t sharedClock() {
  timespec time{};
  ::clock_gettime(CLOCK_MONOTONIC, &time);
  return std::int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

void runUntilKilled(const QString& folder, unsigned seed) {
  RecoverySettings settings;
  settings.folder = folder;
  settings.interval = std::chrono::milliseconds(journalIntervalMs);
  Recovery recovery(settings);
  const DocumentPtr document = Document::create(QStringLiteral("Random"), 150, 140,
                                                modes[seed % modes.size()], MetalContext::shared());
  document->setDirty(true);
  test::RandomCommands commands(document, seed);
  QByteArray last;
  tell(*document, last);
  recovery.follow(document);
  for (;;) {
    const int choice = commands.below(100);
    if (choice < 9) {
      document->undo();
    } else if (choice < 16) {
      document->redo();
    } else {
      commands.runOne();
    }
    // A record can only be made of a state that has been told.
    tell(*document, last);
    QCoreApplication::processEvents();
    if (recovery.status().state != RecoveryStatus::State::recording &&
        !recovery.status().reason.contains(u"long"))
      std::_Exit(3);
  }
}

}  // namespace orvanel::testing

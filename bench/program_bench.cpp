// The editor as a separate process: the time to its first frame, and its cost while idle.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <chrono>
#include <thread>

namespace orvanel {
namespace {

constexpr int patience = 20000;

/// The editor with separate settings, started and awaited until its first frame.
class RunningEditor {
 public:
  explicit RunningEditor(const QStringList& arguments) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home_.path());
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home_.path());
    environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("orvanel.start.debug=true"));
    process_.setProcessEnvironment(environment);
    process_.setProcessChannelMode(QProcess::MergedChannels);
    QElapsedTimer timer;
    timer.start();
    process_.start(QStringLiteral(ORVANEL_PROGRAM), arguments);
    while (!isShown_ && timer.elapsed() < patience && process_.state() != QProcess::NotRunning) {
      process_.waitForReadyRead(patience);
      isShown_ = process_.readAll().contains("first frame");
    }
    secondsToFirstFrame_ = static_cast<double>(timer.nsecsElapsed()) / 1e9;
  }
  ~RunningEditor() {
    process_.kill();
    process_.waitForFinished();
  }
  RunningEditor(const RunningEditor&) = delete;
  RunningEditor& operator=(const RunningEditor&) = delete;

  [[nodiscard]] bool isShown() const { return isShown_; }
  [[nodiscard]] double secondsToFirstFrame() const { return secondsToFirstFrame_; }
  /// Of all its threads since it began.
  [[nodiscard]] double processorSeconds() const {
    QFile file(QStringLiteral("/proc/%1/stat").arg(process_.processId()));
    if (!file.open(QIODevice::ReadOnly)) return 0.0;
    // The fields behind the name in brackets: state is the first, user and system time the 12th and 13th.
    const QByteArray line = file.readAll();
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    return (fields.value(11).toDouble() + fields.value(12).toDouble()) /
           static_cast<double>(sysconf(_SC_CLK_TCK));
  }

 private:
  QTemporaryDir home_;
  QProcess process_;
  bool isShown_ = false;
  double secondsToFirstFrame_ = 0.0;
};

void StartToFirstFrame(benchmark::State& state) {
  for (auto _ : state) {
    const RunningEditor editor({});
    if (!editor.isShown()) state.SkipWithError("no frame came");
    state.SetIterationTime(editor.secondsToFirstFrame());
  }
}

void IdleWithADocument(benchmark::State& state) {
  const QTemporaryDir folder;
  const QString photo = folder.filePath(QStringLiteral("photo.png"));
  QImage image(2000, 1500, QImage::Format_RGB32);
  image.fill(Qt::gray);
  image.save(photo);
  constexpr int settlingSeconds = 3;
  constexpr int idleSeconds = 10;
  for (auto _ : state) {
    const RunningEditor editor({photo});
    if (!editor.isShown()) state.SkipWithError("no frame came");
    std::this_thread::sleep_for(std::chrono::seconds(settlingSeconds));
    const double before = editor.processorSeconds();
    std::this_thread::sleep_for(std::chrono::seconds(idleSeconds));
    state.counters["percent_of_a_core"] = (editor.processorSeconds() - before) * 100.0 / idleSeconds;
  }
}

BENCHMARK(StartToFirstFrame)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(5);
BENCHMARK(IdleWithADocument)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

}  // namespace
}  // namespace orvanel

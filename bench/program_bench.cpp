// The editor as a separate process: the time to its first frame, and its cost and wake-ups while idle.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <QDir>
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
    process_.start(QStringLiteral(ORVANEL_PROGRAM), QStringList(QStringLiteral("--new-window")) + arguments);
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
  /// Processor time of all threads since the start.
  [[nodiscard]] double processorSeconds() const {
    QFile file(QStringLiteral("/proc/%1/stat").arg(process_.processId()));
    if (!file.open(QIODevice::ReadOnly)) return 0.0;
    // Fields after the name in brackets: the state comes first, user and system time are the 12th and 13th.
    const QByteArray line = file.readAll();
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    return (fields.value(11).toDouble() + fields.value(12).toDouble()) /
           static_cast<double>(sysconf(_SC_CLK_TCK));
  }

  /// How often its threads have woken from a wait since the start.
  struct WakeUps {
    double ofMainThread = 0.0;
    double ofOtherThreads = 0.0;
  };
  [[nodiscard]] WakeUps wakeUps() const {
    WakeUps found;
    const QString mainThread = QString::number(process_.processId());
    const QDir threads(QStringLiteral("/proc/%1/task").arg(process_.processId()));
    for (const QString& thread : threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
      QFile file(threads.filePath(thread + QStringLiteral("/status")));
      if (!file.open(QIODevice::ReadOnly)) continue;
      // A thread switches voluntarily whenever it starts to wait: once for every time it was woken.
      constexpr char field[] = "\nvoluntary_ctxt_switches:";
      const QByteArray status = file.readAll();
      const QByteArray rest = status.mid(status.indexOf(field) + static_cast<int>(sizeof(field)) - 1);
      const double count = rest.left(rest.indexOf('\n')).trimmed().toDouble();
      (thread == mainThread ? found.ofMainThread : found.ofOtherThreads) += count;
    }
    return found;
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
    const double seconds = editor.processorSeconds();
    const RunningEditor::WakeUps before = editor.wakeUps();
    std::this_thread::sleep_for(std::chrono::seconds(idleSeconds));
    const RunningEditor::WakeUps after = editor.wakeUps();
    state.counters["percent_of_a_core"] = (editor.processorSeconds() - seconds) * 100.0 / idleSeconds;
    state.counters["wakeups"] = after.ofMainThread - before.ofMainThread;
    state.counters["wakeups_of_other_threads"] = after.ofOtherThreads - before.ofOtherThreads;
  }
}

BENCHMARK(StartToFirstFrame)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(5);
BENCHMARK(IdleWithADocument)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1);

}  // namespace
}  // namespace orvanel

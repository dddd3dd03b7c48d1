// What a view samples of a plan is what flattening the whole canvas gives there, bit for bit: for every kind
// of change, in every colour mode, at every zoom.
#include "raster/SampledComposite.h"

#include <gtest/gtest.h>
#include <chrono>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "raster/MetalContext.h"
#include "raster/RandomSurface.h"
#include "raster/Regularity.h"
#include "raster/fragments/Fragments.h"

namespace orvanel {
namespace {

constexpr int canvasWidth = 300;
constexpr int canvasHeight = 270;

CompositeParams paramsOf(BlendMode mode, float opacity, ColorMode colorMode, bool masked) {
  return {rawValue(mode), opacity, 1, rawValue(colorMode), masked ? 1U : 0U, 0};
}

std::uint64_t opaqueWhite(PixelFormat format) {
  constexpr std::uint64_t halfOnes = 0x3C003C003C003C00U;
  if (isFloatFormat(format)) return halfOnes >> (64U - 8U * static_cast<unsigned>(bytesPerPixel(format)));
  return 0xFFFFFFFFU >> (32U - 8U * static_cast<unsigned>(bytesPerPixel(format)));
}

/// Some layers, the middle ones in a folder that isolates, some under masks.
struct Stack {
  Stack(ColorMode colorMode, std::mt19937& random) : mode(colorMode) {
    for (int i = 0; i < 5; ++i) {
      layers.push_back(randomSurface(layerPixelFormat(mode), canvasWidth, canvasHeight, random));
      masks.push_back(randomSurface(maskPixelFormat, canvasWidth, canvasHeight, random));
    }
    // Covers in the folder: one uniform, one of data.
    const std::uint64_t white = opaqueWhite(layers[1].format());
    layers[1].setUniform(3, white);
    layers[2].setUniform(4, white);
    static_cast<void>(layers[2].editTile(4));
    layers[2].setTrait(4, TileTrait::opaque);
  }

  /// A plan in which the layer or mask of this number is seen through a change.
  [[nodiscard]] std::unique_ptr<CompositePlan> plan(Surface& canvas, Surface& temporary, int changed = -1,
                                                    const SurfaceChange* ofLayer = nullptr,
                                                    const SurfaceChange* ofMask = nullptr) const {
    auto made = std::make_unique<CompositePlan>(canvas);
    const CompositePlan::Target folder = made->addTarget(temporary);
    const auto add = [&](CompositePlan::Target target, int i, BlendMode blendMode, float layerOpacity,
                         bool hasMask) {
      const auto at = static_cast<std::size_t>(i);
      made->compositeLayer(target, paramsOf(blendMode, layerOpacity, mode, hasMask),
                           {&layers[at], i == changed ? ofLayer : nullptr},
                           {hasMask ? &masks[at] : nullptr, i == changed && hasMask ? ofMask : nullptr});
    };
    add(0, 0, BlendMode::normal, 1.0F, false);
    add(folder, 1, BlendMode::normal, 1.0F, false);
    add(folder, 2, blend, opacity, true);
    made->compositeTarget(0, paramsOf(BlendMode::screen, 0.8F, folderColorMode(mode), false), folder);
    add(0, 3, BlendMode::overlay, 0.5F, true);
    add(0, 4, BlendMode::normal, 1.0F, true);
    return made;
  }

  ColorMode mode;
  BlendMode blend = BlendMode::multiply;
  float opacity = 0.6F;
  std::vector<Surface> layers;
  std::vector<Surface> masks;
};

struct View {
  float zoom;
  float scale;
  float offset;
};
constexpr std::array views{View{0.07F, 1.0F, 0.0F},        View{0.33F, 1.25F, 3.3F},
                           View{2.0F / 3.0F, 1.0F, 20.0F}, View{1.0F, 1.0F, 17.0F},
                           View{0.9F, 2.0F, 41.7F},        View{3.0F, 1.25F, 100.5F},
                           View{16.0F, 1.0F, 126.25F}};

CanvasViewUniforms uniformsOf(const View& view) {
  return {200.0F,    170.0F,    float{canvasWidth}, float{canvasHeight}, view.offset, view.offset * 0.9F,
          view.zoom, view.scale};
}

struct NamedChange {
  std::string name;
  SurfaceChange change;
};

std::vector<NamedChange> everyChange(const std::shared_ptr<const Surface>& selection) {
  const auto scaleTo = [](std::array<float, 4> box) {
    ScaleParams params;
    params.source = {20.0F, 30.0F, 200.0F, 180.0F};
    params.destination = box;
    return params;
  };
  const auto affine = [](std::array<float, 6> inverse) {
    AffineParams params;
    params.matrix = inverse;
    return params;
  };
  const RotateParams turn{140.0F, 120.0F, 0.4F, 0, {}};
  const RotateParams quarter{150.0F, 135.0F, 1.5707964F, 0, {}};
  const LevelsParams bent{0, 0, 0.1F, 0.8F, 1.7F, 0};
  const LevelsParams straight{0, 0, 0.2F, 0.9F, 1.0F, 0};
  return {{"shift", {OffsetParams{37, -51}}},
          {"shift by tiles", {OffsetParams{128, 0}}},
          {"shift out of the canvas", {OffsetParams{-1000, 0}}},
          {"enlargement", {scaleTo({-10.0F, 5.0F, 310.5F, 222.25F})}},
          {"reduction", {scaleTo({50.0F, 60.0F, 71.0F, 33.0F})}},
          {"rotation", {turn}},
          {"quarter turn", {quarter}},
          {"affine", {affine({0.8F, 0.3F, -0.2F, 1.3F, 11.0F, -7.5F})}},
          {"strong reduction", {affine({2.6F, 0.4F, -0.7F, 5.3F, -100.0F, -300.0F})}},
          {"means of many", {affine({30.0F, 2.0F, 29.0F, 3.0F, -2000.0F, -200.0F})}},
          {"singular", {affine({0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F})}},
          {"levels", {LevelsChange{bent, nullptr}}},
          {"levels under a selection", {LevelsChange{bent, selection}}},
          {"linear levels under a selection", {LevelsChange{straight, selection}}}};
}

void expectSamplesOf(const Surface& canvas, const SampleGrid& grid, const Surface& samples) {
  ASSERT_EQ(samples.width(), static_cast<int>(grid.columns.size()));
  ASSERT_EQ(samples.height(), static_cast<int>(grid.rows.size()));
  for (int y = 0; y < samples.height(); ++y) {
    for (int x = 0; x < samples.width(); ++x) {
      const int column = grid.columns[static_cast<std::size_t>(x)];
      const int row = grid.rows[static_cast<std::size_t>(y)];
      ASSERT_EQ(samples.pixelAt(x, y), canvas.pixelAt(column, row)) << "at " << column << ", " << row;
    }
  }
}

class SampledComposites : public testing::TestWithParam<ColorMode> {
 protected:
  [[nodiscard]] Surface newComposite() const {
    return {compositePixelFormat(GetParam()), canvasWidth, canvasHeight};
  }
  [[nodiscard]] Surface flattened(const Stack& flat) const {
    Surface canvas = newComposite();
    Surface temporary = newComposite();
    flat.plan(canvas, temporary)->run(CompositeScope::allTiles);
    return canvas;
  }

  MetalContext context{ShaderLibrary::standard()};
  std::mt19937 random{77};
  Stack stack{GetParam(), random};
  Surface composite = newComposite();
  Surface folder = newComposite();
};

TEST_P(SampledComposites, EqualTheFlattenedCanvasAtEveryZoom) {
  const Surface whole = flattened(stack);
  SampledComposite sampled;
  for (const View& view : views) {
    SCOPED_TRACE(testing::Message() << "zoom " << view.zoom << " scale " << view.scale);
    const SampleGrid grid = SampleGrid::ofView(uniformsOf(view));
    expectSamplesOf(whole, grid, sampled.evaluate(*stack.plan(composite, folder), grid));
  }
}

TEST_P(SampledComposites, SeeALayerOrAMaskThroughEveryChange) {
  const auto selection =
      std::make_shared<const Surface>(randomSurface(maskPixelFormat, canvasWidth, canvasHeight, random));
  for (const NamedChange& named : everyChange(selection)) {
    const bool isLevels = std::holds_alternative<LevelsChange>(named.change.arguments);
    Stack changed = stack;
    applyChange(named.change, context, stack.layers[2], changed.layers[2]);
    if (!isLevels) applyChange(named.change, context, stack.masks[2], changed.masks[2]);
    const Surface whole = flattened(changed);
    for (const View& view : views) {
      SCOPED_TRACE(testing::Message() << named.name << ", zoom " << view.zoom << " scale " << view.scale);
      const SampleGrid grid = SampleGrid::ofView(uniformsOf(view));
      SampledComposite sampled;
      const auto plan = stack.plan(composite, folder, 2, &named.change, isLevels ? nullptr : &named.change);
      expectSamplesOf(whole, grid, sampled.evaluate(*plan, grid));
      if (testing::Test::HasFatalFailure()) return;
    }
  }
}

TEST_P(SampledComposites, FollowEveryStepOfAGesture) {
  SampledComposite sampled;
  const SampleGrid grid = SampleGrid::ofView(uniformsOf(views[1]));
  for (const BlendMode mode : allBlendModes) {
    stack.blend = mode;
    stack.opacity -= 0.05F;
    SCOPED_TRACE(displayName(mode));
    expectSamplesOf(flattened(stack), grid, sampled.evaluate(*stack.plan(composite, folder), grid));
  }
  // Pixels that are written while samples are kept.
  fillRandomTile(stack.layers[3], 1, random);
  stack.masks[2].setUniform(0, halfOne);
  expectSamplesOf(flattened(stack), grid, sampled.evaluate(*stack.plan(composite, folder), grid));
}

/// The steps of the canvas alone, any of which may change between two frames.
class ChangingSteps {
 public:
  ChangingSteps(const Stack& stack, std::mt19937& random) : stack_(stack), random_(random) {
    for (int i = 0; i < 6; ++i) {
      steps_.push_back({i % 5, i % 2 == 1, allBlendModes[below(allBlendModes.size())], 0.9F, true});
    }
  }

  void change() {
    Step& step = steps_[steps_.size() - 1 - below(steps_.size())];
    switch (below(5)) {
      case 0:
        if (steps_.size() > 1) steps_.pop_back();
        break;
      case 1:
        steps_.insert(steps_.begin() + static_cast<std::ptrdiff_t>(below(steps_.size())), steps_.back());
        break;
      default:
        changeOften(step);
    }
  }

  [[nodiscard]] std::unique_ptr<CompositePlan> plan(Surface& canvas) const {
    auto made = std::make_unique<CompositePlan>(canvas);
    for (const Step& step : steps_) {
      const auto at = static_cast<std::size_t>(step.layer);
      CompositeParams params = paramsOf(step.blend, step.opacity, stack_.mode, step.isMasked);
      params.visible = step.isVisible ? 1U : 0U;
      made->compositeLayer(0, params, stack_.layers[at], step.isMasked ? &stack_.masks[at] : nullptr);
    }
    return made;
  }

  /// As a slider does: the same step, frame after frame.
  void slide(std::size_t index) { steps_[index % steps_.size()].opacity = fraction(); }

 private:
  struct Step {
    int layer;
    bool isMasked;
    BlendMode blend;
    float opacity;
    bool isVisible;
  };

  void changeOften(Step& step) {
    step.isVisible = !step.isVisible;
    step.opacity = fraction();
    step.blend = allBlendModes[below(allBlendModes.size())];
  }
  std::size_t below(std::size_t end) { return random_() % end; }
  float fraction() { return static_cast<float>(1 + below(99)) / 100.0F; }

  const Stack& stack_;
  std::mt19937& random_;
  std::vector<Step> steps_;
};

TEST_P(SampledComposites, FollowTheSameStepForFramesAndThenAnother) {
  SampledComposite sampled;
  ChangingSteps steps(stack, random);
  SampleGrid grid = SampleGrid::ofView(uniformsOf(views[1]));
  for (int round = 0; round < 40; ++round) {
    SCOPED_TRACE(round);
    if (round % 7 == 6) fillRandomTile(stack.layers[random() % 5], static_cast<int>(random() % 9), random);
    if (round % 11 == 10) grid = SampleGrid::ofView(uniformsOf(views[random() % views.size()]));
    const std::size_t index = random();
    for (int frame = 0; frame < 4; ++frame) {
      if (round % 3 == 2) {
        steps.change();
      } else {
        steps.slide(index);
      }
      Surface whole = newComposite();
      steps.plan(whole)->run(CompositeScope::allTiles);
      expectSamplesOf(whole, grid, sampled.evaluate(*steps.plan(composite), grid));
      if (testing::Test::HasFatalFailure()) return;
    }
  }
}

/// What is below a step that changes is read once, and then not any more.
TEST(SampledComposite, KeepsWhatIsBelowTheStepThatChanges) {
  std::mt19937 random(9);
  const Stack stack(ColorMode::rgb16, random);
  Surface canvas(compositePixelFormat(ColorMode::rgb16), canvasWidth, canvasHeight);
  const SampleGrid grid = SampleGrid::ofView(uniformsOf({0.5F, 1.0F, 0.0F}));
  SampledComposite sampled;
  std::vector<std::size_t> kept;
  for (int frame = 0; frame < 4; ++frame) {
    CompositePlan plan(canvas);
    for (std::size_t i = 0; i < stack.layers.size(); ++i) {
      const float opacity = i == 4 ? 0.1F * static_cast<float>(frame + 1) : 0.5F;
      plan.compositeLayer(0, paramsOf(BlendMode::normal, opacity, ColorMode::rgb16, false), stack.layers[i],
                          nullptr);
    }
    sampled.evaluate(plan, grid);
    kept.push_back(sampled.keptBytes());
  }
  EXPECT_EQ(kept[1], kept[0]);
  EXPECT_GT(kept[2], kept[1]);
  EXPECT_EQ(kept[3], kept[2]);
}

TEST_P(SampledComposites, CompositeOnlyWhatHasChanged) {
  SampledComposite sampled;
  const SampleGrid grid = SampleGrid::ofView(uniformsOf({0.5F, 1.0F, 0.0F}));
  sampled.evaluate(*stack.plan(composite, folder), grid);
  EXPECT_EQ(sampled.blocksMade(), 9);
  EXPECT_GT(sampled.keptBytes(), 0U);
  sampled.evaluate(*stack.plan(composite, folder), grid);
  EXPECT_EQ(sampled.blocksMade(), 0);
  fillRandomTile(stack.layers[0], 5, random);
  sampled.evaluate(*stack.plan(composite, folder), grid);
  EXPECT_EQ(sampled.blocksMade(), 1);
  // A layer that is empty but for one tile, moved within the next.
  for (int tile = 0; tile < 9; ++tile) stack.layers[2].setUniform(tile, 0);
  fillRandomTile(stack.layers[2], 0, random);
  sampled.evaluate(*stack.plan(composite, folder), grid);
  const SurfaceChange move{OffsetParams{10, 0}};
  sampled.evaluate(*stack.plan(composite, folder, 2, &move), grid);
  EXPECT_EQ(sampled.blocksMade(), 2);
  sampled.forget();
  EXPECT_EQ(sampled.keptBytes(), 0U);
}

/// What is gathered ahead is what a first evaluation would gather, and changes nothing that it shows.
TEST_P(SampledComposites, FindWhatWasPreparedInTurns) {
  const SampleGrid grid = SampleGrid::ofView(uniformsOf({0.5F, 1.0F, 0.0F}));
  SampledComposite unprepared;
  const Surface expected = unprepared.evaluate(*stack.plan(composite, folder), grid);

  SampledComposite sampled;
  int turns = 1;
  while (!sampled.prepare(*stack.plan(composite, folder), grid, std::chrono::milliseconds(0))) ++turns;
  EXPECT_GT(turns, 1);
  EXPECT_GE(sampled.keptBytes(), unprepared.keptBytes());
  EXPECT_TRUE(sampled.prepare(*stack.plan(composite, folder), grid, std::chrono::milliseconds(0)));
  EXPECT_TRUE(sampled.evaluate(*stack.plan(composite, folder), grid).equals(expected));

  // A tile that changes afterwards is missing again.
  fillRandomTile(stack.layers[0], 5, random);
  EXPECT_FALSE(sampled.prepare(*stack.plan(composite, folder), grid, std::chrono::milliseconds(0)));
  EXPECT_TRUE(sampled.prepare(*stack.plan(composite, folder), grid, std::chrono::milliseconds(0)));
  unprepared.forget();
  const Surface changed = unprepared.evaluate(*stack.plan(composite, folder), grid);
  EXPECT_TRUE(sampled.evaluate(*stack.plan(composite, folder), grid).equals(changed));
}

/// Surfaces that there is no room for are gathered each time; nobody else makes way for them again and again.
TEST_P(SampledComposites, ArePreparedAsFarAsThereIsRoom) {
  const SampleGrid grid = SampleGrid::ofView(uniformsOf({0.5F, 1.0F, 0.0F}));
  SampledComposite unbounded;
  const Surface expected = unbounded.evaluate(*stack.plan(composite, folder), grid);
  const std::size_t all = unbounded.keptBytes();
  for (std::size_t share = 0; share < 12; ++share) {
    SampledComposite sampled;
    sampled.mostKept = all * share / 12;
    int turns = 0;
    while (!sampled.prepare(*stack.plan(composite, folder), grid, std::chrono::milliseconds(0))) {
      ASSERT_LT(++turns, 100);
    }
    EXPECT_LE(sampled.keptBytes(), sampled.mostKept);
    EXPECT_TRUE(sampled.evaluate(*stack.plan(composite, folder), grid).equals(expected));
    EXPECT_TRUE(sampled.prepare(*stack.plan(composite, folder), grid, std::chrono::milliseconds(0)));
  }
}

INSTANTIATE_TEST_SUITE_P(Modes, SampledComposites, testing::ValuesIn(allColorModes));

TEST(SampledComposite, ReadsIrregularPixelsAsKernelsDo) {
  std::mt19937 random(5);
  Surface layer = randomSurface(PixelFormat::rgba16Float, 200, 200, random);
  auto* words = reinterpret_cast<std::uint16_t*>(layer.editTile(0));
  for (int i = 0; i < 4 * tilePixels; i += 7) words[i] = static_cast<std::uint16_t>(random());
  markIrregularTiles(layer);
  const CompositeParams params = paramsOf(BlendMode::normal, 0.7F, ColorMode::rgb16, false);
  Surface whole(PixelFormat::rgba16Float, 200, 200);
  CompositePlan plan(whole);
  plan.compositeLayer(0, params, layer, nullptr);
  plan.run(CompositeScope::allTiles);
  const SampleGrid grid{{0, 5, 6, 90, 127, 128, 199}, {3, 4, 100, 130}};
  SampledComposite sampled;
  expectSamplesOf(whole, grid, sampled.evaluate(plan, grid));

  const SurfaceChange turn{RotateParams{100.0F, 100.0F, 0.3F, 0, {}}};
  Surface turned(PixelFormat::rgba16Float, 200, 200);
  applyChange(turn, MetalContext::shared(), layer, turned);
  CompositePlan after(whole);
  after.compositeLayer(0, params, turned, nullptr);
  after.run(CompositeScope::allTiles);
  Surface canvas(PixelFormat::rgba16Float, 200, 200);
  CompositePlan before(canvas);
  before.compositeLayer(0, params, {&layer, &turn}, {});
  expectSamplesOf(whole, grid, sampled.evaluate(before, grid));
}

TEST(TransformKernels, AUniformRegionMakesUniformTiles) {
  for (const PixelFormat format : {PixelFormat::r16Float, PixelFormat::rg8Unorm, PixelFormat::rg16Unorm,
                                   PixelFormat::rgba8Unorm, PixelFormat::rgba16Float}) {
    constexpr int side = 128 * 5;
    const std::uint64_t pixel = opaqueWhite(format);
    Surface layer(format, side, side);
    layer.fill(pixel);
    const SurfaceChange turn{RotateParams{side / 2.0F, side / 2.0F, 0.4F, 0, {}}};
    ScaleParams larger;
    larger.source = {0.0F, 0.0F, side, side};
    larger.destination = {-50.5F, -50.5F, side + 100.0F, side + 100.0F};
    for (const SurfaceChange& change : {turn, SurfaceChange{larger}}) {
      Surface changed(format, side, side);
      applyChange(change, MetalContext::shared(), layer, changed);
      EXPECT_EQ(changed.tile(12), Tile::uniform(pixel)) << "the middle";
      EXPECT_EQ(changed.tile(12).isUniform(), changed.tile(7).isUniform());
    }
    Surface turned(format, side, side);
    applyChange(turn, MetalContext::shared(), layer, turned);
    EXPECT_FALSE(turned.tile(0).isUniform()) << "a corner is cut off";
  }
}

}  // namespace
}  // namespace orvanel

#include "platform/linux/imaging/turbo_image_codec.h"

#include <gtest/gtest.h>
#include <png.h>

#include <cstdlib>
#include <ostream>
#include <thread>
#include <vector>

#include "platform/linux/imaging/picture_maker.h"

namespace varnok {

std::ostream& operator<<(std::ostream& out, ImageSize size) {
  return out << size.width << 'x' << size.height;
}

namespace {

using namespace std::string_literals;

constexpr Colour kWhite{255, 255, 255};
constexpr Colour kBlack{0, 0, 0};
constexpr Colour kRed{255, 0, 0};
constexpr Colour kGreen{0, 255, 0};
constexpr Colour kBlue{0, 0, 255};

testing::AssertionResult near(Colour actual, Colour expected, int tolerance = 6) {
  const bool same = std::abs(actual.red - expected.red) <= tolerance &&
                    std::abs(actual.green - expected.green) <= tolerance &&
                    std::abs(actual.blue - expected.blue) <= tolerance;
  if (same) return testing::AssertionSuccess();
  const auto text = [](Colour c) {
    return std::to_string(c.red) + "," + std::to_string(c.green) + "," + std::to_string(c.blue);
  };
  return testing::AssertionFailure() << text(actual) << " instead of " << text(expected);
}

struct ByName {
  template <typename Case>
  std::string operator()(const testing::TestParamInfo<Case>& info) const {
    return info.param.name;
  }
};

// --- Orientation -------------------------------------------------------------

enum class Corner { topLeft, topRight, bottomLeft, bottomRight };

Colour cornerOf(const Image& image, Corner corner) {
  const bool right = corner == Corner::topRight || corner == Corner::bottomRight;
  const bool bottom = corner == Corner::bottomLeft || corner == Corner::bottomRight;
  return pixelAt(image, right ? image.size.width - 4 : 3, bottom ? image.size.height - 4 : 3);
}

struct OrientationCase {
  int value;
  Corner rowStart;  // Where the beginning of the first stored row is to be seen,
  Corner rowEnd;    // and where its end.
  ImageSize upright;
};

class ImageOrientation : public testing::TestWithParam<OrientationCase> {};

TEST_P(ImageOrientation, TurnsTheCornersToTheirPlaces) {
  const Image stored = paint({48, 32}, [](int x, int y) {
    if (y >= 16) return kWhite;
    return x < 16 ? kRed : x >= 32 ? kBlue : kWhite;
  });
  for (const bool bigEndian : {false, true}) {
    JPEGSpec spec;
    spec.exif = exifBlock(GetParam().value, bigEndian);
    const std::string file = makeJPEG(stored, spec);
    EXPECT_EQ(TurboImageCodec().sizeOf(file), GetParam().upright);
    const auto image = TurboImageCodec().decode(file, GetParam().upright);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->size, GetParam().upright);
    EXPECT_TRUE(near(cornerOf(*image, GetParam().rowStart), kRed));
    EXPECT_TRUE(near(cornerOf(*image, GetParam().rowEnd), kBlue));
  }
}

INSTANTIATE_TEST_SUITE_P(, ImageOrientation,
                         testing::Values(OrientationCase{0, Corner::topLeft, Corner::topRight, {48, 32}},
                                         OrientationCase{1, Corner::topLeft, Corner::topRight, {48, 32}},
                                         OrientationCase{2, Corner::topRight, Corner::topLeft, {48, 32}},
                                         OrientationCase{3, Corner::bottomRight, Corner::bottomLeft, {48, 32}},
                                         OrientationCase{4, Corner::bottomLeft, Corner::bottomRight, {48, 32}},
                                         OrientationCase{5, Corner::topLeft, Corner::bottomLeft, {32, 48}},
                                         OrientationCase{6, Corner::topRight, Corner::bottomRight, {32, 48}},
                                         OrientationCase{7, Corner::bottomRight, Corner::topRight, {32, 48}},
                                         OrientationCase{8, Corner::bottomLeft, Corner::topLeft, {32, 48}},
                                         OrientationCase{9, Corner::topLeft, Corner::topRight, {48, 32}}));

TEST(PNGOrientation, IsHonouredToo) {
  PNGSpec spec{PNG_COLOR_TYPE_RGB, 8, "\xFF\x00\x00"s, "\x00\x00\xFF"s};
  spec.exif = exifBlock(6);
  const auto image = TurboImageCodec().decode(makePNG(spec), {16, 16});
  ASSERT_TRUE(image);
  EXPECT_TRUE(near(pixelAt(*image, 8, 2), kRed));
  EXPECT_TRUE(near(pixelAt(*image, 8, 13), kBlue));
}

// --- Formats -----------------------------------------------------------------

struct FormatCase {
  std::string name;
  std::string file;
  Colour left;
  Colour right;
};

std::ostream& operator<<(std::ostream& out, const FormatCase& format) {
  return out << format.name;
}

FormatCase jpegCase(const std::string& name, const JPEGSpec& spec, Colour left, Colour right) {
  return {name, makeJPEG(paintHalves({16, 16}, left, right), spec), left, right};
}

std::vector<FormatCase> formats() {
  const Colour brown{150, 90, 40};
  const Colour teal{20, 130, 140};
  std::vector<FormatCase> cases = {
      jpegCase("JPEGGrey", {JPEGColours::grey}, kBlack, kWhite),
      jpegCase("JPEGRGB", {JPEGColours::rgb}, brown, teal),
      jpegCase("JPEGProgressive", {JPEGColours::ycc, true}, brown, teal),
      jpegCase("JPEGInvertedCMYK", {JPEGColours::cmyk}, brown, teal),
      jpegCase("JPEGPlainCMYK", {JPEGColours::cmyk, false, false}, brown, teal),
      jpegCase("JPEGProgressiveYCCK", {JPEGColours::ycck, true}, brown, teal),
  };
  const PNGSpec specs[] = {
      {PNG_COLOR_TYPE_RGB, 8, "\xFF\x00\x00"s, "\x00\x00\xFF"s},
      {PNG_COLOR_TYPE_RGB, 16, "\xFF\xFF\x00\x01\x00\x00"s, "\x00\x00\x00\x00\xFF\xFE"s},
      {PNG_COLOR_TYPE_GRAY, 1, "\x00"s, "\xFF"s},
      {PNG_COLOR_TYPE_GRAY, 16, "\x80\x00"s, "\xFF\xFF"s},
      {PNG_COLOR_TYPE_GRAY_ALPHA, 8, "\x00\x80"s, "\xFF\xFF"s},
      {PNG_COLOR_TYPE_RGB_ALPHA, 8, "\xFF\x00\x00\x80"s, "\x00\x00\x00\x00"s},
      {PNG_COLOR_TYPE_PALETTE, 8, "\x00"s, "\x01"s, false, "\xFF\x00\x00\x00\xFF\x00"s},
      {PNG_COLOR_TYPE_PALETTE, 1, "\x00"s, "\xFF"s, false, "\xFF\x00\x00\x00\xFF\x00"s, "\xFF\x00"s},
  };
  const FormatCase expected[] = {
      {"PNGRGB", {}, kRed, kBlue},
      {"PNGRGB16", {}, kRed, kBlue},
      {"PNGGrey1", {}, kBlack, kWhite},
      {"PNGGrey16", {}, {128, 128, 128}, kWhite},
      {"PNGGreyAlphaOnWhite", {}, {127, 127, 127}, kWhite},
      {"PNGAlphaOnWhite", {}, {255, 127, 127}, kWhite},
      {"PNGPalette", {}, kRed, kGreen},
      {"PNGPaletteWithTransparentColour", {}, kRed, kWhite},
  };
  for (std::size_t i = 0; i < std::size(specs); ++i) {
    FormatCase format = expected[i];
    PNGSpec spec = specs[i];
    format.file = makePNG(spec);
    cases.push_back(format);
    spec.interlaced = true;
    format.file = makePNG(spec);
    format.name += "Interlaced";
    cases.push_back(format);
  }
  return cases;
}

class ImageFormats : public testing::TestWithParam<FormatCase> {};

TEST_P(ImageFormats, KeepTheirColours) {
  EXPECT_EQ(TurboImageCodec().sizeOf(GetParam().file), (ImageSize{16, 16}));
  for (const int side : {8, 16, 32}) {
    const auto image = TurboImageCodec().decode(GetParam().file, {side, side});
    ASSERT_TRUE(image);
    EXPECT_TRUE(near(pixelAt(*image, side / 8, side / 2), GetParam().left)) << side;
    EXPECT_TRUE(near(pixelAt(*image, side * 7 / 8, side / 2), GetParam().right)) << side;
  }
}

INSTANTIATE_TEST_SUITE_P(, ImageFormats, testing::ValuesIn(formats()), ByName{});

// --- Sizes -------------------------------------------------------------------

struct SizeCase {
  const char* name;
  ImageSize stored;
  ImageSize target;
  ImageSize result;
};

class ImageSizes : public testing::TestWithParam<SizeCase> {};

// A flat picture stays flat to its edges, whichever way it is stretched.
TEST_P(ImageSizes, GiveTheTargetFilledToItsEdges) {
  const Colour colour{40, 120, 200};
  const std::string file = makeJPEG(paintHalves(GetParam().stored, colour, colour));
  const auto image = TurboImageCodec().decode(file, GetParam().target);
  ASSERT_TRUE(image);
  EXPECT_EQ(image->size, GetParam().result);
  for (int y = 0; y < image->size.height; ++y) {
    for (int x = 0; x < image->size.width; ++x)
      ASSERT_TRUE(near(pixelAt(*image, x, y), colour)) << x << ' ' << y;
  }
}

INSTANTIATE_TEST_SUITE_P(, ImageSizes,
                         testing::Values(SizeCase{"Enlarged", {5, 7}, {23, 31}, {23, 31}},
                                         SizeCase{"Reduced", {333, 211}, {31, 23}, {31, 23}},
                                         SizeCase{"Stretched", {200, 20}, {20, 200}, {20, 200}},
                                         SizeCase{"OnePixel", {1, 1}, {9, 9}, {9, 9}},
                                         SizeCase{"LongStripKeepsAPixel", {4000, 2}, {96, 0}, {96, 1}},
                                         SizeCase{"TallStripKeepsAPixel", {2, 4000}, {0, 96}, {1, 96}}),
                         ByName{});

TEST(ImageReduction, AveragesWhatANewPixelCovers) {
  const Image stripes = paint({64, 64}, [](int x, int y) { return (x + y) % 2 == 0 ? kBlack : kWhite; });
  const auto image = TurboImageCodec().decode(makeJPEG(stripes), {4, 4});
  ASSERT_TRUE(image);
  EXPECT_TRUE(near(pixelAt(*image, 1, 2), {127, 127, 127}));
}

// --- What a stranger may send --------------------------------------------------

struct LimitCase {
  const char* name;
  std::string file;
};

std::ostream& operator<<(std::ostream& out, const LimitCase& limit) {
  return out << limit.name;
}

class ImageLimit : public testing::TestWithParam<LimitCase> {};

TEST_P(ImageLimit, RefusesByTheHeaderAlone) {
  EXPECT_EQ(TurboImageCodec().sizeOf(GetParam().file), std::nullopt);
  EXPECT_FALSE(TurboImageCodec().decode(GetParam().file, {16, 16}));
}

const PNGSpec kGreyPNG{PNG_COLOR_TYPE_GRAY, 8, "\x00"s, "\xFF"s};
const PNGSpec kInterlacedPNG{PNG_COLOR_TYPE_GRAY, 8, "\x00"s, "\xFF"s, true};
const Image kSmall = paintHalves({16, 16}, kRed, kBlue);

INSTANTIATE_TEST_SUITE_P(, ImageLimit,
                         testing::Values(LimitCase{"PNG", withPNGSize(makePNG(kGreyPNG), 60000, 60000)},
                                         LimitCase{"PNGSide", withPNGSize(makePNG(kGreyPNG), 70000, 1)},
                                         LimitCase{"InterlacedPNG", withPNGSize(makePNG(kInterlacedPNG), 10000, 10000)},
                                         LimitCase{"JPEG", withJPEGSize(makeJPEG(kSmall), 65500, 65500)},
                                         LimitCase{
                                             "ProgressiveJPEG",
                                             withJPEGSize(makeJPEG(kSmall, {JPEGColours::ycc, true}), 10000, 10000)}),
                         ByName{});

TEST(ImageLimits, LetALargeCameraPictureThrough) {
  EXPECT_EQ(TurboImageCodec().sizeOf(withJPEGSize(makeJPEG(kSmall), 12000, 9000)), (ImageSize{12000, 9000}));
}

TEST(DamagedImages, TruncatedJPEGGivesWhatIsThere) {
  const Image tall = paintHalves({64, 640}, kRed, kBlue);
  const std::string file = makeJPEG(tall);
  const auto image = TurboImageCodec().decode(file.substr(0, file.size() / 2), tall.size);
  ASSERT_TRUE(image);
  EXPECT_TRUE(near(pixelAt(*image, 8, 8), kRed));
}

TEST(DamagedImages, EveryTruncationAndEveryFlippedByteIsSurvived) {
  PNGSpec png = kInterlacedPNG;
  png.exif = exifBlock(6);
  JPEGSpec jpeg{JPEGColours::ycc, true};
  jpeg.exif = exifBlock(6);
  const TurboImageCodec codec({.pixels = 1 << 20, .pixelsHeldWhole = 1 << 20});
  for (const std::string& file : {makePNG(png), makePNG(kGreyPNG), makeJPEG(kSmall), makeJPEG(kSmall, jpeg)}) {
    for (std::size_t at = 0; at < file.size(); ++at) {
      std::string flipped = file;
      flipped[at] = static_cast<char>(~flipped[at]);
      for (const std::string& bytes : {file.substr(0, at), flipped}) {
        const bool readable = codec.sizeOf(bytes).has_value();
        const auto image = codec.decode(bytes, {8, 8});
        EXPECT_TRUE(!image || (readable && image->rgb.size() == 192)) << at;
      }
    }
  }
}

TEST(DamagedImages, GarbageGivesNothing) {
  for (const std::string& bytes :
       {""s, "not a picture"s, "\xFF\xD8\xFF"s, "\x89PNG\r\n\x1A\n"s, "\xFF\xD8\xFF"s + std::string(5000, 'x')}) {
    EXPECT_EQ(TurboImageCodec().sizeOf(bytes), std::nullopt);
    EXPECT_FALSE(TurboImageCodec().decode(bytes, {16, 16}));
  }
}

// --- Encoding ------------------------------------------------------------------

TEST(ImageEncoding, HigherQualityIsLargerAndNearer) {
  const Image image = paint({96, 96}, [](int x, int y) { return Colour{x * 5 % 256, (x + y) % 256, y * 7 % 256}; });
  const auto errorOf = [&](const std::string& file) {
    const auto decoded = TurboImageCodec().decode(file, image.size);
    long error = 0;
    for (std::size_t i = 0; i < image.rgb.size(); ++i)
      error += std::abs(int{decoded->rgb[i]} - int{image.rgb[i]});
    return error;
  };
  const auto lowest = TurboImageCodec().encodeJPEG(image, 0.0);
  const auto highest = TurboImageCodec().encodeJPEG(image, 1.0);
  ASSERT_TRUE(lowest && highest);
  EXPECT_LT(lowest->size() * 2, highest->size());
  EXPECT_LT(errorOf(*highest) * 2, errorOf(*lowest));
  EXPECT_EQ(TurboImageCodec().encodeJPEG(image, -3), lowest);
}

TEST(ImageEncoding, PictureWithoutPixelsGivesNothing) {
  EXPECT_FALSE(TurboImageCodec().encodeJPEG(Image{}, 0.5));
}

// --- Threads -------------------------------------------------------------------

TEST(ImageThreads, OneCodecServesManyThreads) {
  const TurboImageCodec codec;
  const std::string jpeg = makeJPEG(paintHalves({64, 64}, kRed, kBlue), {JPEGColours::ycc, true});
  const std::string png = makePNG(kInterlacedPNG);
  const auto work = [&] {
    std::string result;
    for (const std::string& file : {jpeg, png, jpeg.substr(0, 200)}) {
      const auto image = codec.decode(file, {24, 24});
      result += image ? *codec.encodeJPEG(*image, 0.5) : "nothing";
    }
    return result;
  };
  const std::string alone = work();
  std::vector<std::string> results(8);
  std::vector<std::thread> threads;
  threads.reserve(results.size());
  for (std::string& result : results) {
    threads.emplace_back([&result, &work] {
      for (int i = 0; i < 5; ++i)
        result = work();
    });
  }
  for (std::thread& thread : threads)
    thread.join();
  for (const std::string& result : results)
    EXPECT_EQ(result, alone);
}

}  // namespace
}  // namespace varnok

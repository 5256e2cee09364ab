// Pictures and movies of a display: the checks before a save, bmp/png/gif read back by PIL
// pixel for pixel, jpg within a stated PSNR, AVI read back through libavformat.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

#include "files/avi_file.h"
#include "files/picture_file.h"
#include "tests/files/stub_display.h"
#include "tests/peer.h"

namespace {

namespace fs = std::filesystem;

double Psnr(const std::string& a, const std::string& b) {
    if (a.size() != b.size() || a.empty()) return 0;
    double sum = 0;
    for (size_t k = 0; k < a.size(); ++k) {
        const double d = static_cast<uint8_t>(a[k]) - static_cast<uint8_t>(b[k]);
        sum += d * d;
    }
    return sum == 0 ? 1e9 : 10 * std::log10(255.0 * 255.0 * a.size() / sum);
}

class Pictures : public ::testing::Test {
  protected:
    void TearDown() override {
        while (GlobalWindowSpace().Count() > 0) GlobalWindowSpace().DelData(0);
    }
    std::string Temp(const std::string& name) const { return (dir_.Dir() / name).string(); }
    size_t FilesInFolder() const {
        return static_cast<size_t>(
            std::distance(fs::directory_iterator(dir_.Dir()), fs::directory_iterator()));
    }

    peer::Peer dir_;  // a scratch folder of the test's own
    CSaveOptions options_;
    std::string status_;
};

}  // namespace

TEST_F(Pictures, OnlyAListedDisplayOfADisplayKindIsSaved) {
    CStubDisplay unlisted(KIND_2D, 8, 4, 4);
    CStubDisplay* plain = ListStub(0, 8, 4, 4, nullptr);
    struct Case {
        CDisplayEntry* display;
        const char* bmp;
        const char* avi;
    };
    const Case cases[] = {
        {nullptr, "can not find image", "can not find image"},
        {&unlisted, "can not find image", "can not find image"},
        {plain, "display data as 1d/2d/xy/rgb before saving as bmp",
         "display data as 1d/2d/xy/rgb before saving as avi"},
    };
    for (const Case& c : cases) {
        CSaveRequest r{Temp("x.png"), {}, c.display, &options_, &status_};
        EXPECT_EQ(SavePicture(r), 0);
        EXPECT_EQ(status_, c.bmp);
        EXPECT_EQ(SaveAvi(r, CAviOptions{}), 0);
        EXPECT_EQ(status_, c.avi);
    }
    EXPECT_EQ(FilesInFolder(), 0u);
}

// Both frame kinds in every format; an odd width makes the 8-bit rows padded.
TEST_F(Pictures, PilReadsBackBmpPngGifExactlyAndJpgAbove30dB) {
    const char* const exts[] = {"bmp", "png", "gif", "jpg"};
    std::string script = "from PIL import Image\n";
    std::vector<std::string> expected;
    for (int bits : {8, 32}) {
        CStubDisplay* d = ListStub(bits == 8 ? KIND_2D : KIND_RGB, bits, 13, 7, nullptr);
        d->page_z = 1;
        const uint64_t page[4] = {1, 0, 0, 0};
        for (const char* ext : exts) {
            const std::string tag = ext + std::to_string(bits);
            const std::string path = Temp(tag + "." + ext);
            ASSERT_EQ(SavePicture({path, {}, d, &options_, &status_}), 1) << tag << ": " << status_;
            script +=
                "im = Image.open('" + path + "')\nprint(im.format)\n" + "peer.save(FOLDER, '" +
                tag +
                "', np.ascontiguousarray(np.asarray(im.convert('RGB')).transpose(2, 1, 0)))\n";
            expected.push_back(d->Expected(page));
        }
    }
    peer::Peer p;
    ASSERT_TRUE(p.RunText(script));
    EXPECT_EQ(p.Output(), "BMP\nPNG\nGIF\nJPEG\nBMP\nPNG\nGIF\nJPEG\n");
    size_t n = 0;
    for (int bits : {8, 32})
        for (const char* ext : exts) {
            const std::string tag = ext + std::to_string(bits);
            const peer::Array got = p.Get(tag);
            EXPECT_EQ(got.shape, (std::vector<uint64_t>{3, 13, 7})) << tag;
            if (std::string(ext) == "jpg")
                EXPECT_GT(Psnr(got.bytes, expected[n]), 30.0) << tag;
            else
                EXPECT_EQ(got.bytes, expected[n]) << tag;
            ++n;
        }
}

TEST_F(Pictures, GifOfManyColoursIsQuantisedCloseToTheFrame) {
    CStubDisplay* d = ListStub(KIND_RGB, 32, 64, 64, nullptr);  // 4096 colours
    const std::string path = Temp("many.gif");
    ASSERT_EQ(SavePicture({path, {}, d, &options_, &status_}), 1) << status_;
    peer::Peer p;
    ASSERT_TRUE(
        p.RunText("from PIL import Image\n"
                  "peer.save(FOLDER, 'g', np.ascontiguousarray(np.asarray(Image.open('" +
                  path + "').convert('RGB')).transpose(2, 1, 0)))\n"));
    const uint64_t page[4] = {0, 0, 0, 0};
    EXPECT_GT(Psnr(p.Get("g").bytes, d->Expected(page)), 25.0);
}

// ---- movies ------------------------------------------------------------------------------

namespace {

struct MovieFrame {
    int64_t pts;
    std::string rgb;
};

struct Movie {
    AVRational rate{0, 1};
    AVRational time_base{0, 1};
    std::string codec;
    std::vector<MovieFrame> frames;  // the coded frames; empty packets are skipped frames
};

// Reads every coded frame of `path` through libavformat and decodes it to RGB bytes.
Movie ReadMovie(const std::string& path) {
    Movie m;
    AVFormatContext* fmt = nullptr;
    if (avformat_open_input(&fmt, path.c_str(), nullptr, nullptr) < 0) return m;
    avformat_find_stream_info(fmt, nullptr);
    const AVStream* st = fmt->streams[0];
    m.rate = st->r_frame_rate;
    m.time_base = st->time_base;
    const AVCodec* codec = avcodec_find_decoder(st->codecpar->codec_id);
    m.codec = codec ? codec->name : "";
    AVCodecContext* dec = avcodec_alloc_context3(codec);
    avcodec_parameters_to_context(dec, st->codecpar);
    avcodec_open2(dec, codec, nullptr);
    AVPacket* pkt = av_packet_alloc();
    AVFrame* frame = av_frame_alloc();
    while (av_read_frame(fmt, pkt) >= 0) {
        if (pkt->size > 0 && avcodec_send_packet(dec, pkt) >= 0 &&
            avcodec_receive_frame(dec, frame) >= 0) {
            const int w = frame->width, h = frame->height;
            std::string rgb(static_cast<size_t>(w) * h * 3, '\0');
            SwsContext* sws =
                sws_getContext(w, h, static_cast<AVPixelFormat>(frame->format), w, h,
                               AV_PIX_FMT_RGB24, SWS_POINT, nullptr, nullptr, nullptr);
            uint8_t* dst[1] = {reinterpret_cast<uint8_t*>(rgb.data())};
            const int stride[1] = {3 * w};
            sws_scale(sws, frame->data, frame->linesize, 0, h, dst, stride);
            sws_freeContext(sws);
            m.frames.push_back({pkt->pts, rgb});
        }
        av_packet_unref(pkt);
    }
    av_frame_free(&frame);
    av_packet_free(&pkt);
    avcodec_free_context(&dec);
    avformat_close_input(&fmt);
    return m;
}

}  // namespace

TEST_F(Pictures, MoviesReadBackWithTheirRateTimestampsAndFrames) {
    CZrkData data;
    data.SetHeader(TYPE_R4, 32, 24, 3, 2, 1, 1);  // z 3, t 2: six pages
    options_.fps = 7;
    options_.ppt = 2;
    struct Case {
        int encoder;
        int bits;
        const char* codec;
        double min_psnr;  // 0: exact
    };
    const Case cases[] = {{AVI_FFV1, 8, "ffv1", 0},
                          {AVI_RAW, 32, "rawvideo", 0},
                          {AVI_MJPEG, 8, "mjpeg", 35},
                          {AVI_MJPEG, 32, "mjpeg", 35}};
    for (const Case& c : cases) {
        CStubDisplay* d = ListStub(KIND_2D, c.bits, 30, 20, &data);
        CAviOptions avi;
        avi.encoder = c.encoder;
        char name[16];
        std::snprintf(name, sizeof name, "m%d.avi", c.encoder);
        const std::string path = Temp(name);
        ASSERT_EQ(SaveAvi({path, {}, d, &options_, &status_}, avi), 1) << status_;
        const Movie m = ReadMovie(path);
        EXPECT_EQ(m.codec, c.codec);
        EXPECT_EQ(av_cmp_q(m.rate, AVRational{7, 1}), 0) << m.rate.num << "/" << m.rate.den;
        ASSERT_EQ(m.frames.size(), 6u) << c.codec;
        for (size_t n = 0; n < 6; ++n) {
            // Frame n stands at (n + 1) * ppt frames of 1/7 s; z runs fastest.
            EXPECT_EQ(av_rescale_q(m.frames[n].pts, m.time_base, AVRational{1, 7}),
                      static_cast<int64_t>(n + 1) * 2)
                << c.codec << " frame " << n;
            const uint64_t page[4] = {n % 3, n / 3, 0, 0};
            if (c.min_psnr == 0)
                EXPECT_EQ(m.frames[n].rgb, d->Expected(page)) << c.codec << " frame " << n;
            else
                EXPECT_GT(Psnr(m.frames[n].rgb, d->Expected(page)), c.min_psnr) << c.codec;
        }
    }
}

TEST_F(Pictures, MovieRangesNameAndFailures) {
    CZrkData data;
    data.SetHeader(TYPE_R4, 8, 8, 3, 2, 1, 1);
    CStubDisplay* d = ListStub(KIND_2D, 8, 16, 16, &data);
    options_.fps = 5;
    options_.ppt = 1;
    CAviOptions avi;
    avi.encoder = AVI_FFV1;
    avi.first[0] = avi.last[0] = 2;  // z 2 only, every t
    ASSERT_EQ(SaveAvi({Temp("part"), {}, d, &options_, &status_}, avi), 1) << status_;
    EXPECT_FALSE(fs::exists(Temp("part")));
    const Movie m = ReadMovie(Temp("part.avi"));
    ASSERT_EQ(m.frames.size(), 2u);
    const uint64_t second[4] = {2, 1, 0, 0};
    EXPECT_EQ(m.frames[1].rgb, d->Expected(second));

    avi.first[0] = 2, avi.last[0] = 1;
    EXPECT_EQ(SaveAvi({Temp("empty.avi"), {}, d, &options_, &status_}, avi), 0);
    EXPECT_EQ(status_, "avi file error: ffffffea bad parameters");  // AVERROR(EINVAL)

    // A frame of another size midway: an error, and the movie that was there stays whole.
    avi.ResetRanges();
    const std::string before = std::string(
        std::istreambuf_iterator<char>(*std::make_unique<std::ifstream>(Temp("part.avi"))), {});
    d->resize_at_z_ = 1;
    EXPECT_EQ(SaveAvi({Temp("part.avi"), {}, d, &options_, &status_}, avi), 0);
    EXPECT_EQ(status_, "avi file error: ffffffde bad size");  // AVERROR(ERANGE)
    std::ifstream again(Temp("part.avi"), std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(again), {}), before);
    EXPECT_EQ(FilesInFolder(), 1u);  // no temporary left

    d->resize_at_z_ = ~0ull;
    EXPECT_EQ(SaveAvi({Temp("no/folder/x.avi"), {}, d, &options_, &status_}, avi), 0);
    EXPECT_EQ(status_, "open avi file error: fffffffe");  // AVERROR(ENOENT)
}

TEST_F(Pictures, AviErrorTextsFollowTheLibavCodes) {
    EXPECT_STREQ(AviErrorText(AVERROR_INVALIDDATA),
                 "file is corrupt file or an unrecognized format.");
    EXPECT_STREQ(AviErrorText(AVERROR(ENOMEM)),
                 "There is not enough memory to complete the operation.");
    EXPECT_STREQ(AviErrorText(AVERROR(EACCES)), "file is read only");
    EXPECT_STREQ(AviErrorText(AVERROR_ENCODER_NOT_FOUND), "A suitable compressor cannot be found.");
    EXPECT_STREQ(AviErrorText(AVERROR(ENOSPC)), "error during write");
    EXPECT_STREQ(AviErrorText(AVERROR_EXIT), "user abort");
    EXPECT_STREQ(AviErrorText(AVERROR_BUFFER_TOO_SMALL), "buffer too small");
    EXPECT_STREQ(AviErrorText(-123456), "can not compress");
    EXPECT_EQ(AviPath("a.avi"), "a.avi");
    EXPECT_EQ(AviPath("a.mov"), "a.mov.avi");
    EXPECT_EQ(AviPath("A.AVI"), "A.AVI");
}

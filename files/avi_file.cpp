#include "files/avi_file.h"

#include <strings.h>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libswscale/swscale.h>
}

#include "display/display_entry.h"
#include "files/atomic_file.h"
#include "files/picture_file.h"

namespace {

std::string Hex(int code) {
    char text[16];
    std::snprintf(text, sizeof text, "%x", static_cast<unsigned>(code));
    return text;
}

// An encoder failure: libav's code and our text for it.
struct AviFailure {
    int code;
};

void Check(int code) {
    if (code < 0) throw AviFailure{code};
}

struct Encoder {
    AVCodecID id;
    AVPixelFormat formats[3];  // preferred first; the first the encoder takes is used
};

Encoder EncoderOf(int choice) {
    switch (choice) {
        case AVI_FFV1:
            return {AV_CODEC_ID_FFV1, {AV_PIX_FMT_0RGB32, AV_PIX_FMT_BGR0, AV_PIX_FMT_GBRP}};
        case AVI_RAW:
            return {AV_CODEC_ID_RAWVIDEO, {AV_PIX_FMT_BGR24, AV_PIX_FMT_NONE, AV_PIX_FMT_NONE}};
        // Full chroma: the colour edges of a palette survive.
        default:
            return {AV_CODEC_ID_MJPEG, {AV_PIX_FMT_YUVJ444P, AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_NONE}};
    }
}

AVPixelFormat PickFormat(const AVCodec* codec, const Encoder& e) {
    for (AVPixelFormat want : e.formats) {
        if (want == AV_PIX_FMT_NONE) break;
        if (!codec->pix_fmts) return want;
        for (const AVPixelFormat* p = codec->pix_fmts; *p != AV_PIX_FMT_NONE; ++p)
            if (*p == want) return want;
    }
    return AV_PIX_FMT_NONE;
}

// One frame as B, G, R, 0 words whatever the display drew.
void ToBgr0(const CFrame& f, std::vector<uint8_t>& out) {
    out.resize(static_cast<size_t>(f.width) * f.height * 4);
    for (int y = 0; y < f.height; ++y) {
        const uint8_t* in = &f.pixels[static_cast<size_t>(y) * f.stride];
        uint8_t* o = &out[static_cast<size_t>(y) * f.width * 4];
        if (f.bits == 32) {
            std::memcpy(o, in, static_cast<size_t>(f.width) * 4);
            continue;
        }
        for (int x = 0; x < f.width; ++x) {
            const uint8_t* c = f.palette[in[x]];
            o[4 * x] = c[2], o[4 * x + 1] = c[1], o[4 * x + 2] = c[0], o[4 * x + 3] = 0;
        }
    }
}

bool FrameIsWhole(const CFrame& f) {
    if (f.width <= 0 || f.height <= 0 || (f.bits != 8 && f.bits != 32)) return false;
    return f.stride >= f.width * (f.bits / 8) &&
           f.pixels.size() >= static_cast<size_t>(f.stride) * f.height;
}

// The libav objects of one movie, released in the right order whatever happens.
class CAviMovie {
  public:
    ~CAviMovie() {
        sws_freeContext(sws_);
        av_frame_free(&frame_);
        av_packet_free(&packet_);
        avcodec_free_context(&codec_);
        if (format_) {
            if (format_->pb) avio_closep(&format_->pb);
            avformat_free_context(format_);
        }
    }

    // Sets up the stream and opens the file; an open failure is the caller's own text.
    int Open(const std::string& path, int width, int height, int fps, int encoder) {
        // libav's notes (such as the one on the JPEG colour range) would go to stderr; the
        // failures come back as codes and reach the status.
        static const bool quiet = [] {
            av_log_set_level(AV_LOG_ERROR);
            return true;
        }();
        (void)quiet;
        Check(avformat_alloc_output_context2(&format_, nullptr, "avi", path.c_str()));
        const Encoder e = EncoderOf(encoder);
        const AVCodec* codec = avcodec_find_encoder(e.id);
        if (!codec) throw AviFailure{AVERROR_ENCODER_NOT_FOUND};
        const AVPixelFormat pix = PickFormat(codec, e);
        if (pix == AV_PIX_FMT_NONE) throw AviFailure{AVERROR(ENOSYS)};
        stream_ = avformat_new_stream(format_, nullptr);
        codec_ = avcodec_alloc_context3(codec);
        if (!stream_ || !codec_) throw AviFailure{AVERROR(ENOMEM)};
        codec_->width = width;
        codec_->height = height;
        codec_->pix_fmt = pix;
        codec_->time_base = AVRational{1, fps};
        codec_->framerate = AVRational{fps, 1};
        codec_->gop_size = 1;
        codec_->thread_count = 1;
        if (e.id == AV_CODEC_ID_MJPEG) {
            // Fixed fine quantiser: a wave picture keeps its detail.
            codec_->flags |= AV_CODEC_FLAG_QSCALE;
            codec_->global_quality = FF_QP2LAMBDA * 2;
            codec_->color_range = AVCOL_RANGE_JPEG;
        }
        if (format_->oformat->flags & AVFMT_GLOBALHEADER)
            codec_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        Check(avcodec_open2(codec_, codec, nullptr));
        Check(avcodec_parameters_from_context(stream_->codecpar, codec_));
        stream_->time_base = codec_->time_base;
        frame_ = av_frame_alloc();
        packet_ = av_packet_alloc();
        if (!frame_ || !packet_) throw AviFailure{AVERROR(ENOMEM)};
        frame_->format = pix;
        frame_->width = width;
        frame_->height = height;
        Check(av_frame_get_buffer(frame_, 0));
        sws_ = sws_getContext(width, height, AV_PIX_FMT_BGR0, width, height, pix, SWS_POINT,
                              nullptr, nullptr, nullptr);
        if (!sws_) throw AviFailure{AVERROR(EINVAL)};
        const int open = avio_open(&format_->pb, path.c_str(), AVIO_FLAG_WRITE);
        if (open < 0) return open;
        Check(avformat_write_header(format_, nullptr));
        return 0;
    }

    // An empty frame at 0: the muxer fills later gaps with empty frames itself, but not the
    // gap before the first frame, and frame n belongs at (n + 1) * ppt.
    void WriteLeadingGap() {
        av_packet_unref(packet_);
        packet_->pts = packet_->dts = 0;
        packet_->stream_index = stream_->index;
        Check(av_interleaved_write_frame(format_, packet_));
    }

    void Write(const std::vector<uint8_t>& bgr0, int64_t pts) {
        Check(av_frame_make_writable(frame_));
        const uint8_t* src[1] = {bgr0.data()};
        const int src_stride[1] = {codec_->width * 4};
        sws_scale(sws_, src, src_stride, 0, codec_->height, frame_->data, frame_->linesize);
        frame_->pts = pts;
        frame_->pict_type = AV_PICTURE_TYPE_I;
        frame_->quality = codec_->global_quality;
        Check(avcodec_send_frame(codec_, frame_));
        Drain();
    }

    void Finish() {
        Check(avcodec_send_frame(codec_, nullptr));
        Drain();
        Check(av_write_trailer(format_));
        Check(avio_closep(&format_->pb));
    }

  private:
    void Drain() {
        for (;;) {
            const int r = avcodec_receive_packet(codec_, packet_);
            if (r == AVERROR(EAGAIN) || r == AVERROR_EOF) return;
            Check(r);
            av_packet_rescale_ts(packet_, codec_->time_base, stream_->time_base);
            packet_->stream_index = stream_->index;
            packet_->flags |= AV_PKT_FLAG_KEY;
            Check(av_interleaved_write_frame(format_, packet_));
        }
    }

    AVFormatContext* format_ = nullptr;
    AVStream* stream_ = nullptr;
    AVCodecContext* codec_ = nullptr;
    AVFrame* frame_ = nullptr;
    AVPacket* packet_ = nullptr;
    SwsContext* sws_ = nullptr;
};

// The pages of one range: first to last, clamped to the display's sizes.
void Range(const CAviOptions& avi, int k, uint64_t size, uint64_t& lo, uint64_t& hi) {
    if (size == 0) size = 1;
    lo = avi.first[k] < 0 ? 0 : static_cast<uint64_t>(avi.first[k]);
    hi = avi.last[k] < 0 ? size - 1 : static_cast<uint64_t>(avi.last[k]);
    if (hi > size - 1) hi = size - 1;
}

}  // namespace

std::string AviPath(const std::string& path) {
    const size_t n = path.size();
    if (n >= 4 && strcasecmp(path.c_str() + n - 4, ".avi") == 0) return path;
    return path + ".avi";
}

const char* AviErrorText(int error) {
    switch (error) {
        case AVERROR_INVALIDDATA:
            return "file is corrupt file or an unrecognized format.";
        case AVERROR(ENOMEM):
            return "There is not enough memory to complete the operation.";
        case AVERROR(EIO):
            return "error during write";
        case AVERROR(ENOSPC):
            return "error during write";
        case AVERROR(EROFS):
        case AVERROR(EACCES):
        case AVERROR(EPERM):
            return "file is read only";
        case AVERROR_ENCODER_NOT_FOUND:
            return "A suitable compressor cannot be found.";
        case AVERROR(ENOSYS):
        case AVERROR_PATCHWELCOME:
            return "Compression is not supported for this type of data.";
        case AVERROR_BUG:
        case AVERROR_BUG2:
            return "internal error";
        case AVERROR_OPTION_NOT_FOUND:
            return "bad flags";
        case AVERROR(EINVAL):
            return "bad parameters";
        case AVERROR(ERANGE):
        case AVERROR(EFBIG):
            return "bad size";
        case AVERROR(EBADF):
            return "bad handle";
        case AVERROR_EXTERNAL:
            return "compressor error";
        case AVERROR_EOF:
            return "no data";
        case AVERROR_BUFFER_TOO_SMALL:
            return "buffer too small";
        case AVERROR_EXIT:
            return "user abort";
        default:
            return "can not compress";
    }
}

int SaveAvi(const CSaveRequest& request, const CAviOptions& avi) {
    std::string scratch;
    std::string& status = request.status ? *request.status : scratch;
    status = CheckDisplay(request.display, "avi");
    if (!status.empty()) return 0;
    CDisplayEntry* display = request.display;
    const int fps = request.options && request.options->fps > 0 ? request.options->fps : 1;
    const int ppt = request.options && request.options->ppt > 0 ? request.options->ppt : 1;
    const CZrkData* data = display->data[0];
    uint64_t lo[4], hi[4];
    for (int k = 0; k < 4; ++k) Range(avi, k, data ? data->Res(k + 2) : 1, lo[k], hi[k]);
    for (int k = 0; k < 4; ++k)
        if (lo[k] > hi[k]) {
            status =
                "avi file error: " + Hex(AVERROR(EINVAL)) + " " + AviErrorText(AVERROR(EINVAL));
            return 0;
        }

    CAtomicFile file(AviPath(request.path));
    if (!file.Create()) {
        status = "open avi file error: " + Hex(AVERROR(errno));
        return 0;
    }
    try {
        CAviMovie movie;
        std::vector<uint8_t> bgr0;
        int64_t n = 0;
        int width = 0, height = 0;
        uint64_t page[4];
        for (page[3] = lo[3]; page[3] <= hi[3]; ++page[3])
            for (page[2] = lo[2]; page[2] <= hi[2]; ++page[2])
                for (page[1] = lo[1]; page[1] <= hi[1]; ++page[1])
                    for (page[0] = lo[0]; page[0] <= hi[0]; ++page[0]) {
                        CFrame frame;
                        if (!display->RenderFrame(page, frame) || !FrameIsWhole(frame))
                            throw AviFailure{AVERROR(EINVAL)};
                        if (n == 0) {
                            width = frame.width, height = frame.height;
                            const int open =
                                movie.Open(file.TempPath(), width, height, fps, avi.encoder);
                            if (open < 0) {
                                status = "open avi file error: " + Hex(open);
                                return 0;
                            }
                            movie.WriteLeadingGap();
                        } else if (frame.width != width || frame.height != height) {
                            throw AviFailure{AVERROR(ERANGE)};
                        }
                        ToBgr0(frame, bgr0);
                        movie.Write(bgr0, (n + 1) * ppt);
                        ++n;
                    }
        movie.Finish();
    } catch (const AviFailure& f) {
        status = "avi file error: " + Hex(f.code) + " " + AviErrorText(f.code);
        return 0;
    } catch (const std::bad_alloc&) {
        const int code = AVERROR(ENOMEM);
        status = "avi file error: " + Hex(code) + " " + AviErrorText(code);
        return 0;
    }
    if (!file.Commit()) {
        const int code = AVERROR(EIO);
        status = "avi file error: " + Hex(code) + " " + AviErrorText(code);
        return 0;
    }
    return 1;
}

int SaveAviRow(const CSaveRequest& request) { return SaveAvi(request, AviOptions()); }

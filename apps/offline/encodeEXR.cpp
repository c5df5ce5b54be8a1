#include <apps/offline/Image.h>

#include <ImfChannelList.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfOutputFile.h>
#include <ImfStdIO.h>

#include <apps/offline/Film.h>

namespace rq::offline
{
namespace
{
/// The channels of a file and where their values lie.
class Channels
{
public:
    Channels(const Film &film, Imf::Header &header) : film_(film), header_(header), halves_(film.pixels.size() * 10) {}

    void half(const char *name, auto &&valueOf)
    {
        half_t *values = halves_.data() + used_;
        used_ += film_.pixels.size();
        for (size_t i = 0; i < film_.pixels.size(); ++i)
            values[i] = half_t(valueOf(film_.pixels[i]));
        add(name, Imf::HALF, values, sizeof(half_t));
    }
    void single(const char *name, const float *first) { add(name, Imf::FLOAT, first, sizeof(Pixel)); }
    const Imf::FrameBuffer &frame() const { return frame_; }

private:
    using half_t = ::half;

    void add(const char *name, Imf::PixelType type, const void *first, size_t stride)
    {
        header_.channels().insert(name, Imf::Channel(type));
        char *base = const_cast<char *>(static_cast<const char *>(first));
        frame_.insert(name, Imf::Slice(type, base, stride, stride * size_t(film_.width)));
    }

    const Film &film_;
    Imf::Header &header_;
    Imf::FrameBuffer frame_;
    std::vector<half_t> halves_;
    size_t used_ = 0;
};
}  // namespace

std::string encodeEXR(const Film &film, std::string &error)
{
    try
    {
        Imf::Header header(film.width, film.height);
        header.compression() = Imf::ZIP_COMPRESSION;
        Channels channels(film, header);
        const auto triple = [&](const std::string &prefix, const char *names, BAS_Vec3f Pixel::*layer) {
            for (int i = 0; i < 3; ++i)
                channels.half((prefix + names[i]).c_str(), [=](const Pixel &pixel) { return (pixel.*layer)[i]; });
        };
        triple("", "RGB", &Pixel::beauty);
        triple("albedo.", "RGB", &Pixel::albedo);
        triple("normal.", "XYZ", &Pixel::normal);
        channels.half("A", [](const Pixel &pixel) { return pixel.coverage; });
        channels.single("Z", &film.pixels[0].depth);

        Imf::StdOSStream stream;
        {
            Imf::OutputFile file(stream, header, 0);
            file.setFrameBuffer(channels.frame());
            file.writePixels(film.height);
        }
        return stream.str();
    }
    catch (const std::exception &reason)
    {
        error = reason.what();
        return {};
    }
}
}  // namespace rq::offline

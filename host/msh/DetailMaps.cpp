#include <host/msh/Detail.h>

#include <atomic>

#include <host/msh/detail/caches.h>

namespace
{
// A vertex costs about a nanosecond in both loops, so a piece is some 30 us of work.
constexpr int64_t kVerticesPerPiece = 32768;

// Set a bit that other threads may set, or set neighbours of, at the same time.  Most are set already: look first.
void mark(BAS_BitArray &bits, int64_t i)
{
    const std::atomic_ref<uint64_t> word(bits.words()[i >> 6]);
    const uint64_t bit = uint64_t(1) << (i & 63);
    if (!(word.load(std::memory_order_relaxed) & bit))
        word.fetch_or(bit, std::memory_order_relaxed);
}
}  // namespace

const MSH_Detail::PointUse &MSH_Detail::pointUse() const
{
    return pointUse_.getOrBuild([this] {
        BAS_IntrusivePtr<PointUse> use(new PointUse);
        use->used.resize(capacity(ELM_OWNER_POINT));
        vertexPoint().visit([&](const auto &pages) {
            host::parallelForRange(pages.size(), kVerticesPerPiece, [&](int64_t begin, int64_t end) {
                pages.forEachRun(begin, end - begin, [&](const auto *points, int64_t count, bool repeated) {
                    for (int64_t i = 0; i < (repeated ? 1 : count); ++i)
                        if (points[i] >= 0)
                            mark(use->used, points[i]);
                });
            });
        });
        use->usedCount = use->used.count();
        return BAS_IntrusivePtr<const PointUse>(use);
    });
}

const BAS_BitArray &MSH_Detail::usedPoints() const { return pointUse().used; }

bool MSH_Detail::hasUnusedPoints() const { return pointUse().usedCount != pointCount(); }

const ELM_IndexColumn &MSH_Detail::vertexPrimitive() const
{
    const VertexOwners &owners = vertexOwners_.getOrBuild([this] {
        BAS_IntrusivePtr<VertexOwners> built(new VertexOwners);
        built->primitive.resize(capacity(ELM_OWNER_VERTEX));
        built->primitive.modifyAll(capacity(ELM_OWNER_PRIMITIVE), [this](auto *primitiveOf) {
            const auto endOf = [this](int64_t primitive) {
                const VertexRun run = vertexRun(primitive);
                return run.start + run.count;
            };
            host::parallelForWeighted(capacity(ELM_OWNER_PRIMITIVE), kVerticesPerPiece, endOf,
                                      [&](int64_t begin, int64_t end) {
                                          for (int64_t primitive = begin; primitive < end; ++primitive)
                                          {
                                              const VertexRun run = vertexRun(primitive);
                                              std::fill_n(primitiveOf + run.start, run.count, primitive);
                                          }
                                      });
        });
        return BAS_IntrusivePtr<const VertexOwners>(built);
    });
    return owners.primitive;
}

#include <host/elm/PageArray.h>

#include <cstring>

#include <host/elm/detail/pages.h>

namespace
{
// Copy tuples of a size known to the compiler (0: any); components past the tuple are 0.
template <int kComponents, class T, class RowOf> struct Gather
{
    static void run(T *to, int64_t stride, int64_t count, int components, int64_t given, RowOf rowOf)
    {
        const int64_t copied = kComponents ? kComponents : given;
        for (int64_t i = 0; i < count; ++i, to += stride)
        {
            const T *from = rowOf(i);
            for (int64_t c = 0; c < copied; ++c)
                to[c] = from[c];
            for (int64_t c = copied; c < (kComponents ? kComponents : components); ++c)
                to[c] = T(0);
        }
    }
};

template <class T, class RowOf> void gather(T *to, int64_t stride, int64_t count, int components, int tupleSize, RowOf rowOf)
{
    const int64_t given = std::min(components, tupleSize);
    auto run = Gather<0, T, RowOf>::run;
    if (given == components)
        run = components == 1   ? Gather<1, T, RowOf>::run
              : components == 2 ? Gather<2, T, RowOf>::run
              : components == 3 ? Gather<3, T, RowOf>::run
              : components == 4 ? Gather<4, T, RowOf>::run
                                : run;
    run(to, stride, count, components, given, rowOf);
}
}  // namespace

template <class T>
void ELM_PageArray<T>::copyOut(T *to, const ELM_OffsetList &rows, int64_t first, int64_t count, int components,
                               int64_t stride) const
{
    if (!rows.isTrivial())
    {
        rows.visit([&](const auto &offsets) {
            const auto rowOf = [&, reader = reader()](int64_t i) { return reader.tuple(offsets[first + i]); };
            gather(to, stride, count, components, tupleSize(), rowOf);
        });
        return;
    }
    if (count < 1)
        return;
    forEachRun(rows[first], count, [&](const T *tuples, int64_t length, bool repeated) {
        const int64_t step = repeated ? 0 : tupleSize();
        if (!repeated && components == tupleSize() && stride == components)
            std::memcpy(static_cast<void *>(to), tuples, bytesOf(length));
        else
            gather(to, stride, length, components, tupleSize(), [=](int64_t i) { return tuples + i * step; });
        to += length * stride;
    });
}

#define INSTANTIATE(T)                                                                                                      \
    template void ELM_PageArray<T>::copyOut(T *, const ELM_OffsetList &, int64_t, int64_t, int, int64_t) const;
ELM_EACH_PAGE_TYPE(INSTANTIATE)

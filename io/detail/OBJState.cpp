#include <io/detail/OBJState.h>

#include <array>
#include <string>
#include <unordered_map>

#include <host/mod/Edit.h>
#include <io/Scanner.h>

namespace rq::io
{
namespace
{
/// Give every primitive the state that was set last before it, run by run.
class OBJState
{
public:
    OBJState(MOD_Edit &edit, int64_t primitives) : edit_(edit), primitives_(primitives) {}

    void change(const OBJChange &change, int64_t primitive)
    {
        Run &run = runs_[change.what];
        finish(change.what, primitive);
        run = {change.text, change.smoothing, primitive};
        declare(change.what);
    }

    void finishAll()
    {
        for (const OBJChange::What what : {OBJChange::Groups, OBJChange::Object, OBJChange::Material, OBJChange::Smoothing})
            finish(what, primitives_);
    }

private:
    struct Run
    {
        std::string_view text;
        int32_t smoothing = 0;
        int64_t first = 0;
    };

    void declare(OBJChange::What what);
    void finish(OBJChange::What what, int64_t end);
    void forEachGroup(int64_t first, int64_t count);

    MOD_Edit &edit_;
    int64_t primitives_;
    std::array<Run, OBJChange::Smoothing + 1> runs_;
    ELM_Attribute *object_ = nullptr;
    ELM_Attribute *material_ = nullptr;
    ELM_Attribute *smoothing_ = nullptr;
    std::unordered_map<std::string_view, ELM_Group *> groups_;
};

// What a file names exists, even when no primitive has it.
void OBJState::declare(OBJChange::What what)
{
    if (what == OBJChange::Groups)
        forEachGroup(primitives_, 0);
    else if (what == OBJChange::Object && !object_)
        object_ = edit_.stringAttribute(ELM_OWNER_PRIMITIVE, "object");
    else if (what == OBJChange::Material && !material_)
        material_ = edit_.stringAttribute(ELM_OWNER_PRIMITIVE, "material");
    else if (what == OBJChange::Smoothing && !smoothing_)
        smoothing_ = edit_.attribute(ELM_OWNER_PRIMITIVE, "smoothing", ELM_STORAGE_INT32);
}

void OBJState::finish(OBJChange::What what, int64_t end)
{
    const Run &run = runs_[what];
    const int64_t count = end - run.first;
    if (count < 1)
        return;
    if (what == OBJChange::Groups)
        forEachGroup(run.first, count);
    else if (what == OBJChange::Smoothing && smoothing_)
        smoothing_->pages<int32_t>()->fill(run.first, count, &run.smoothing);
    else if (ELM_Attribute *names = what == OBJChange::Object     ? object_
                                    : what == OBJChange::Material ? material_
                                                                  : nullptr;
             names && !run.text.empty())
        names->strings()->fill(run.first, count, names->strings()->add(run.text));
}

void OBJState::forEachGroup(int64_t first, int64_t count)
{
    Scanner scanner(runs_[OBJChange::Groups].text);
    while (scanner.toWord())
    {
        const std::string_view name = scanner.word();
        if (name == "default")
            continue;
        ELM_Group *&group = groups_[name];
        if (!group)
            group = edit_.group(ELM_OWNER_PRIMITIVE, name);
        if (count > 0)
            group->setRange(first, count);
    }
}
}  // namespace

void writeOBJState(MOD_Edit &edit, const std::vector<OBJBlock> &blocks, const std::vector<int64_t> &firstPrimitive)
{
    OBJState state(edit, firstPrimitive.back());
    for (size_t b = 0; b < blocks.size(); ++b)
    {
        for (const OBJChange &change : blocks[b].changes)
        {
            if (change.what != OBJChange::Kind)
                state.change(change, firstPrimitive[b] + change.primitive);
        }
    }
    state.finishAll();
}
}  // namespace rq::io

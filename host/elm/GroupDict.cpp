#include <host/elm/GroupDict.h>

#include <unordered_map>
#include <vector>

struct ELM_GroupDict::Table : BAS_IntrusiveRefCounter<Table>
{
    std::vector<ELM_GroupHandle> groups;
    std::unordered_map<std::string_view, int64_t> places;  // the keys are the names' own characters

    void add(ELM_GroupHandle group)
    {
        places.emplace(group->name().view(), int64_t(groups.size()));
        groups.push_back(std::move(group));
    }
};

ELM_GroupDict::ELM_GroupDict() : table_(new Table) {}
ELM_GroupDict::~ELM_GroupDict() = default;
ELM_GroupDict::ELM_GroupDict(const ELM_GroupDict &) = default;
ELM_GroupDict &ELM_GroupDict::operator=(const ELM_GroupDict &) = default;

// Groups of a table that was copied are shared, so writing one copies it.
ELM_GroupDict::Table &ELM_GroupDict::own()
{
    if (table_->use_count() > 1)
        table_ = new Table(*table_);
    return *table_;
}

int64_t ELM_GroupDict::size() const { return int64_t(table_->groups.size()); }

const ELM_Group &ELM_GroupDict::operator[](int64_t i) const { return *table_->groups[size_t(i)]; }

const ELM_Group *ELM_GroupDict::find(std::string_view name) const
{
    const auto found = table_->places.find(name);
    return found == table_->places.end() ? nullptr : &(*this)[found->second];
}

ELM_Group *ELM_GroupDict::writable(int64_t i)
{
    ELM_GroupHandle &group = own().groups[size_t(i)];
    if (group->use_count() > 1)
        group = group->clone();
    return group.get();
}

ELM_Group *ELM_GroupDict::writable(ELM_Owner owner, const BAS_StringHolder &name)
{
    const auto found = table_->places.find(name.view());
    if (found != table_->places.end())
        return writable(found->second);
    own().add(new ELM_Group(owner, name));
    return table_->groups.back().get();
}

bool ELM_GroupDict::remove(std::string_view name)
{
    const ELM_Group *gone = find(name);
    if (!gone)
        return false;
    const BAS_IntrusivePtr<Table> rest(new Table);
    for (const ELM_GroupHandle &group : table_->groups)
        if (group.get() != gone)
            rest->add(group);
    table_ = rest;
    return true;
}

void ELM_GroupDict::trim(ELM_Offset end)
{
    for (int64_t i = 0; i < size(); ++i)
        if ((*this)[i].end() > end)
            writable(i)->trim(end);
}

void ELM_GroupDict::subtract(const ELM_Range &range)
{
    for (int64_t i = 0; i < size(); ++i)
        if ((*this)[i].meets(range))
            writable(i)->subtract(range);
}

int64_t ELM_GroupDict::memoryUsage() const
{
    int64_t bytes = int64_t(sizeof(Table) + table_->groups.capacity() * sizeof(ELM_GroupHandle));
    for (const ELM_GroupHandle &group : table_->groups)
        bytes += group->memoryUsage();
    return bytes;
}

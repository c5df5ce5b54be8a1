#pragma once

#include <host/mod/Edit.h>
#include <io/detail/PackedCopies.h>
#include <rq/data/DataArray.h>

namespace rq::io
{
/// The attributes of copies of packed geometry, all in one detail.
class UnpackedColumns
{
public:
    /// `plain` are the parts as they are copied.  Warns, under the name of the file, of attributes that copies cannot have.
    UnpackedColumns(const PackedCopies &copies, const std::vector<MOD_ConstDetailHandle> &plain, const std::string &name,
                    Messages &messages);

    /// Write the rows of all copies.  The edit began with the first one, and has the elements of all.  False when the edit
    /// fails.
    bool write(MOD_Edit &edit) const;

private:
    struct Column
    {
        ELM_Owner owner;
        BAS_StringHolder name;
        ELM_Storage storage;
        int size;
        ELM_TypeInfo type;

        bool isText() const { return storage == ELM_STORAGE_STRING; }
    };

    void take(size_t part);
    void take(const ELM_Attribute &attribute);
    bool has(size_t part, std::string_view name) const;
    const ELM_Attribute *find(size_t part, const Column &column) const;
    const ELM_Attribute *inherited(const PackedCopy &copy, const Column &column, int64_t &row) const;
    RQ_DataArrayHandle sourceOf(size_t part, const Column &column) const;
    bool keepsFirst(const Column &column) const;
    bool dropOthers(MOD_Edit &edit) const;
    bool writeNumbers(MOD_Edit &edit, const Column &column) const;
    bool writeTexts(MOD_Edit &edit, const Column &column) const;
    template <class T>
    void fill(const Column &column, const PackedCopy &copy, const RQ_DataArrayHandle &source, T *rows) const;

    const PackedCopies &copies_;
    const std::vector<MOD_ConstDetailHandle> &plain_;
    const std::string &name_;
    Messages &messages_;
    std::vector<Column> columns_;
};
}  // namespace rq::io

// Compound files with libgsf.
#include "platform/compoundfile.h"

#include "platform/compoundfile/Structure.h"

#include <gsf/gsf.h>

#include <algorithm>
#include <cstring>
#include <map>

namespace zeb::platform
{
namespace
{

constexpr size_t Piece = 64 * 1024;

struct Unref
{
    void operator()(void* object) const { g_object_unref(object); }
};
template <class T>
using Ref = std::unique_ptr<T, Unref>;

/// What is wrong with a file is told by exceptions, not on standard error. libgsf's texts have its name or none.
void Ignore(const gchar* domain, GLogLevelFlags level, const gchar* text, gpointer data)
{
    if (domain != nullptr && std::strncmp(domain, "libgsf", 6) != 0)
    {
        g_log_default_handler(domain, level, text, data);
    }
}

void Start()
{
    static const bool started = (gsf_init(), g_log_set_default_handler(Ignore, nullptr), true);
    static_cast<void>(started);
}

/// The text of an error, which is freed.
std::string TextOf(GError* error, const char* otherwise)
{
    const std::string text = error != nullptr && error->message != nullptr ? error->message : otherwise;
    g_clear_error(&error);
    return text;
}

std::string Folded(std::string name)
{
    std::transform(name.begin(), name.end(), name.begin(), [](char letter) { return g_ascii_tolower(letter); });
    return name;
}

class Stream final : public CompoundStream
{
public:
    Stream(Ref<GsfInput> input, std::string name)
        : m_input(std::move(input))
        , m_name(std::move(name))
    {
    }

    uint64_t Size() const override { return static_cast<uint64_t>(gsf_input_size(m_input.get())); }

    size_t Read(char* buffer, size_t size) override
    {
        const auto left = static_cast<uint64_t>(gsf_input_remaining(m_input.get()));
        const size_t read = static_cast<size_t>(std::min<uint64_t>({left, size, Piece}));
        if (read != 0 && gsf_input_read(m_input.get(), read, reinterpret_cast<guint8*>(buffer)) == nullptr)
        {
            throw CompoundError("the stream '" + m_name + "' cannot be read: its sectors are damaged");
        }
        return read;
    }

private:
    const Ref<GsfInput> m_input;
    const std::string m_name;
};

class Folder final : public CompoundFolder
{
public:
    explicit Folder(Ref<GsfInfile> infile)
        : m_infile(std::move(infile))
    {
        const int count = gsf_infile_num_children(m_infile.get());
        for (int i = 0; i < count; ++i)
        {
            const char* name = gsf_infile_name_by_index(m_infile.get(), i);
            m_names.emplace_back(name == nullptr ? "" : name);
            m_indices.emplace(Folded(m_names.back()), i);
        }
    }

    std::vector<std::string> Names() const override { return m_names; }

    std::shared_ptr<CompoundFolder> OpenFolder(const std::string& name) override
    {
        Ref<GsfInput> child = Open(name);
        if (!child || !IsFolder(child.get()))
        {
            return nullptr;
        }
        return std::make_shared<Folder>(Ref<GsfInfile>(GSF_INFILE(child.release())));
    }

    std::unique_ptr<CompoundStream> OpenStream(const std::string& name) override
    {
        Ref<GsfInput> child = Open(name);
        return child && !IsFolder(child.get()) ? std::make_unique<Stream>(std::move(child), name) : nullptr;
    }

private:
    static bool IsFolder(GsfInput* child)
    {
        return GSF_IS_INFILE(child) && gsf_infile_num_children(GSF_INFILE(child)) >= 0;
    }

    Ref<GsfInput> Open(const std::string& name)
    {
        const auto index = m_indices.find(Folded(name));
        if (index == m_indices.end())
        {
            return nullptr;
        }
        Ref<GsfInput> child(gsf_infile_child_by_index(m_infile.get(), index->second));
        if (!child)
        {
            throw CompoundError("the stream '" + name + "' cannot be read: its sectors are damaged");
        }
        return child;
    }

    const Ref<GsfInfile> m_infile;
    std::vector<std::string> m_names;
    std::map<std::string, int> m_indices; ///< by folded name
};

class Output final : public CompoundOutput
{
public:
    explicit Output(Ref<GsfOutfile> outfile)
        : m_outfile(std::move(outfile))
    {
    }

    std::unique_ptr<CompoundOutput> AddFolder(const std::string& name) override
    {
        Ref<GsfOutput> child = Add(name, TRUE);
        return std::make_unique<Output>(Ref<GsfOutfile>(GSF_OUTFILE(child.release())));
    }

    void AddStream(const std::string& name, const CompoundSource& source) override
    {
        const Ref<GsfOutput> child = Add(name, FALSE);
        std::vector<char> piece(Piece);
        while (const size_t size = source(piece.data(), piece.size()))
        {
            if (!gsf_output_write(child.get(), size, reinterpret_cast<const guint8*>(piece.data())))
            {
                Fail(child.get());
            }
        }
        Close(child.get());
    }

    void Finish() override { Close(GSF_OUTPUT(m_outfile.get())); }

private:
    [[noreturn]] static void Fail(GsfOutput* output)
    {
        const GError* error = gsf_output_error(output);
        throw CompoundError(error != nullptr && error->message != nullptr ? error->message : "writing failed");
    }

    static void Close(GsfOutput* output)
    {
        if (!gsf_output_close(output))
        {
            Fail(output);
        }
    }

    Ref<GsfOutput> Add(const std::string& name, gboolean isFolder)
    {
        Ref<GsfOutput> child(gsf_outfile_new_child(m_outfile.get(), name.c_str(), isFolder));
        if (!child)
        {
            Fail(GSF_OUTPUT(m_outfile.get()));
        }
        return child;
    }

    const Ref<GsfOutfile> m_outfile;
};

} // namespace

std::shared_ptr<CompoundFolder> OpenCompoundFile(const std::string& file)
{
    Start();
    GError* error = nullptr;
    const Ref<GsfInput> input(gsf_input_stdio_new(file.c_str(), &error));
    if (!input)
    {
        throw CompoundError(TextOf(error, "it cannot be opened"));
    }
    CheckCompoundStructure(file);
    Ref<GsfInfile> infile(gsf_infile_msole_new(input.get(), &error));
    if (!infile)
    {
        throw CompoundError("it is no undamaged compound file: " + TextOf(error, "its directory cannot be read"));
    }
    return std::make_shared<Folder>(std::move(infile));
}

std::unique_ptr<CompoundOutput> CreateCompoundFile(const std::string& file, const CompoundClass& kind)
{
    Start();
    GError* error = nullptr;
    const Ref<GsfOutput> sink(gsf_output_stdio_new(file.c_str(), &error));
    if (!sink)
    {
        throw CompoundError(TextOf(error, "it cannot be created"));
    }
    Ref<GsfOutfile> outfile(gsf_outfile_msole_new(sink.get()));
    gsf_outfile_msole_set_class_id(GSF_OUTFILE_MSOLE(outfile.get()), kind.data());
    return std::make_unique<Output>(std::move(outfile));
}

} // namespace zeb::platform

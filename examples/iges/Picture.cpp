#include "examples/iges/Picture.h"

#include <algorithm>
#include <cmath>

namespace iges
{

namespace
{

constexpr unsigned int codePageUtf8 = 65001;

/// Thrown through the writing to give it up.
class Stopped
{
};

using Meanings = std::map<wchar_t, const wchar_t*>;

/// Without zeros at the end.
std::string Text(double value, int places)
{
    return from_utf(to_wstring(value, places, false, L".", true), codePageUtf8);
}

/// With a text in place of each character that means something, and a blank in place of those that mean nothing.
std::string Quoted(const std::wstring& text, const Meanings& meanings)
{
    std::wstring quoted;
    for (const wchar_t c : text)
    {
        const auto meaning = meanings.find(c);
        if (meaning != meanings.end())
            quoted += meaning->second;
        else
            quoted += c < L' ' ? L' ' : c;
    }
    return from_utf(quoted, codePageUtf8);
}

/// From the right, the front and above, onto a plane with y downwards.
std::array<double, 2> Projected(const Point& point)
{
    return {(point[0] + point[1]) / std::sqrt(2.0), (point[0] - point[1] - 2.0 * point[2]) / std::sqrt(6.0)};
}

/// Where a point is on a page that all of a wireframe fits on.
class Page
{
public:
    explicit Page(const Wireframe& wireframe)
    {
        Extents box;
        const auto add = [&](const Point& point)
        {
            const auto [x, y] = Projected(point);
            box.Add({x, y, 0.0});
        };
        std::ranges::for_each(wireframe.Points(), add);
        for (const std::vector<Point>& polyline : wireframe.Polylines())
            std::ranges::for_each(polyline, add);
        if (box.IsEmpty())
            return;
        m_low = box.Low();
        const Point size = box.High() - m_low;
        const double largest = std::max(size[0], size[1]);
        m_scale = largest > 0.0 ? (width - 2.0 * margin) / largest : 1.0;
        m_width = m_scale * size[0] + 2.0 * margin;
        m_height = m_scale * size[1] + 2.0 * margin;
    }

    double Width() const { return m_width; }
    double Height() const { return m_height; }

    std::string Place(const Point& point) const
    {
        constexpr int places = 2;
        const auto [x, y] = Projected(point);
        return Text(margin + m_scale * (x - m_low[0]), places) + ' ' + Text(margin + m_scale * (y - m_low[1]), places);
    }

private:
    static constexpr double width = 1000.0;
    static constexpr double margin = 20.0;

    Point m_low = {};
    double m_scale = 1.0;
    double m_width = 2.0 * margin;
    double m_height = 2.0 * margin;
};

/// Opens a new file by `open`, and has its text from `write`. Each insertion into a file is a write to the system, so
/// texts are gathered.
template <class File, class Open, class Write>
bool Replace(const boost::filesystem::path& path, const IsStopped& isStopped, const Open& open, const Write& write)
{
    constexpr std::size_t bytesAtOnce = 1 << 16;
    CBackupFile backup(path);
    {
        File file;
        open(file, backup.GetTempFilename());
        std::string gathered;
        const auto flush = [&]
        {
            if (isStopped())
                throw Stopped();
            file << gathered.c_str();
            gathered.clear();
        };
        try
        {
            write(
                [&](const std::string& text)
                {
                    gathered += text;
                    if (gathered.size() >= bytesAtOnce)
                        flush();
                });
            flush();
        }
        catch (const Stopped&)
        {
            return false;
        }
        file.CommitAndClose();
    }
    if (isStopped())
        return false;
    backup.SetReplaceFile(true);
    return true;
}

}

void WritePicture(const Wireframe& wireframe, const std::wstring& title, const TextSink& write)
{
    const Page page(wireframe);
    write(
        "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " + Text(page.Width(), 0) + ' ' +
        Text(page.Height(), 0) + "\">\n<title>" + Quoted(title, {{L'<', L"&lt;"}, {L'>', L"&gt;"}, {L'&', L"&amp;"}}) +
        "</title>\n<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n"
        "<g fill=\"none\" stroke=\"#134\" stroke-width=\"1.5\" stroke-linecap=\"round\" stroke-linejoin=\"round\">\n");
    for (const std::vector<Point>& polyline : wireframe.Polylines())
    {
        std::string path = "<path d=\"M";
        std::string last;
        for (const Point& point : polyline)
        {
            const std::string place = page.Place(point);
            if (place != last)
                path += (last.empty() ? "" : "L") + place;
            last = place;
        }
        write(path + "h0\"/>\n"); // a line of no length is a dot
    }
    write("</g>\n<g stroke=\"#134\" stroke-width=\"4\" stroke-linecap=\"round\">\n");
    for (const Point& point : wireframe.Points())
        write("<path d=\"M" + page.Place(point) + "h0\"/>\n");
    write("</g>\n</svg>\n");
}

void WriteScene(const Wireframe& wireframe, const std::wstring& title, const TextSink& write)
{
    // A hundredth of what curves are off by.
    const int places = std::max(0, 2 - static_cast<int>(std::floor(std::log10(wireframe.Error()))));
    const auto coordinates = [&](const Point& point)
    { return Text(point[0], places) + ' ' + Text(point[1], places) + ' ' + Text(point[2], places) + '\n'; };
    const auto shape = [&](const char* geometry)
    {
        write(std::string("Shape {\nappearance Appearance { material Material { emissiveColor 0 0 0 } }\ngeometry ") +
              geometry + " {\ncoord Coordinate { point [\n");
    };

    write("#VRML V2.0 utf8\nWorldInfo { title \"" + Quoted(title, {{L'"', L"\\\""}, {L'\\', L"\\\\"}}) +
          "\" info \"curves are within " + Text(wireframe.Error(), places) + "\" }\nBackground { skyColor 1 1 1 }\n");
    if (!wireframe.Polylines().empty())
    {
        shape("IndexedLineSet");
        for (const std::vector<Point>& polyline : wireframe.Polylines())
        {
            for (const Point& point : polyline)
                write(coordinates(point));
        }
        write("] }\ncoordIndex [\n");
        std::size_t index = 0;
        for (const std::vector<Point>& polyline : wireframe.Polylines())
        {
            std::string line;
            for (std::size_t i = 0; i < polyline.size(); ++i)
                line += std::to_string(index++) + ' ';
            write(line + "-1\n");
        }
        write("] } }\n");
    }
    if (!wireframe.Points().empty())
    {
        shape("PointSet");
        for (const Point& point : wireframe.Points())
            write(coordinates(point));
        write("] } } }\n");
    }
}

bool SavePicture(const boost::filesystem::path& path, const Wireframe& wireframe, const std::wstring& title,
                 const IsStopped& isStopped)
{
    return Replace<CTextFile>(
        path, isStopped, [](CTextFile& file, const boost::filesystem::path& newPath) { file.Open(newPath); },
        [&](const TextSink& write) { WritePicture(wireframe, title, write); });
}

bool SaveScene(const boost::filesystem::path& path, const Wireframe& wireframe, const std::wstring& title,
               const IsStopped& isStopped)
{
    constexpr int level = 6;
    return Replace<CVRMLFile>(
        path, isStopped,
        [&](CVRMLFile& file, const boost::filesystem::path& newPath)
        { file.Open(newPath, path.extension() == ".gz", level); },
        [&](const TextSink& write) { WriteScene(wireframe, title, write); });
}

}

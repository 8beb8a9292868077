// SPDX-License-Identifier: MIT
#include "Comparison.h"

#include <algorithm>
#include <cmath>

namespace deeppick
{

namespace
{

constexpr int kSingleDigits = 7;
constexpr int kDoubleDigits = 10;

/// The quantities that are compared.
struct Quantity
{
    const char* name;
    double RayHit::Amounts::*amount;
};
constexpr Quantity kQuantities[] = {
    {"position", &RayHit::Amounts::position},
    {"normal", &RayHit::Amounts::normal},
    {"texcoord", &RayHit::Amounts::texCoord},
    {"depth", &RayHit::Amounts::depth},
};

double distance(const QVector3D& a, const Vector3& b)
{
    return std::hypot(double(a.x()) - b.x, double(a.y()) - b.y, double(a.z()) - b.z);
}

RayHit::Amounts difference(const Fragment& fragment, const RayHit& hit)
{
    return {distance(fragment.position, hit.position), distance(fragment.normal, hit.normal),
            std::hypot(double(fragment.texCoord.x()) - hit.u, double(fragment.texCoord.y()) - hit.v),
            std::abs(double(fragment.depth) - hit.depth)};
}

QString number(double value, int digits)
{
    return QString::number(value == 0.0 ? 0.0 : value, 'g', digits); // no minus before 0
}

QString vector(std::initializer_list<double> values, int digits)
{
    QStringList texts;
    for (const double value : values)
        texts.append(number(value, digits));
    return QStringLiteral("(%1)").arg(texts.join(QStringLiteral(", ")));
}

QString places(const Vector3& position, const Vector3& normal, double u, double v, double depth, int digits)
{
    return QStringLiteral("position %1 normal %2 texcoord %3 depth %4")
        .arg(vector({position.x, position.y, position.z}, digits), vector({normal.x, normal.y, normal.z}, digits),
             vector({u, v}, digits), number(depth, digits));
}

Vector3 toVector3(const QVector3D& a)
{
    return {double(a.x()), double(a.y()), double(a.z())};
}

/// Names come out of files: what would end a line or the quotes goes.
QString quoted(QString name)
{
    for (QChar& character : name)
        if (!character.isPrint() || character == QLatin1Char('"'))
            character = QLatin1Char(' ');
    return QStringLiteral("\"%1\"").arg(name);
}

QString label(const QString& object, std::uint32_t instance, std::uint32_t triangle)
{
    return QStringLiteral("%1 instance %2 triangle %3").arg(quoted(object)).arg(instance).arg(triangle);
}

QString faultOf(const ComparedSurface& surface)
{
    for (const Quantity& quantity : kQuantities)
    {
        // Written so that what is no number is a fault too.
        const double difference = surface.difference.*quantity.amount;
        if (!(difference <= surface.hit->allowed.*quantity.amount))
            return QStringLiteral("the %1 is off by %2").arg(QLatin1String(quantity.name), number(difference, 3));
    }
    return {};
}

} // namespace

std::vector<ComparedSurface> compare(const std::vector<Fragment>& fragments, const std::vector<RayHit>& hits,
                                     double reach)
{
    std::vector<ComparedSurface> surfaces;
    std::vector<bool> isTaken(hits.size(), false);
    for (const Fragment& fragment : fragments)
    {
        ComparedSurface surface;
        surface.fragment = fragment;
        for (std::size_t i = 0; i < hits.size() && !surface.hit; ++i)
        {
            if (isTaken[i] || hits[i].draw != fragment.draw || hits[i].triangle != fragment.triangle)
                continue;
            isTaken[i] = true;
            surface.hit = hits[i];
            surface.difference = difference(fragment, hits[i]);
        }
        surface.fault = surface.hit ? faultOf(surface) : QStringLiteral("the ray does not meet it");
        if (!surfaces.empty() && surfaces.back().fragment->depth > fragment.depth)
            surface.fault = QStringLiteral("it is nearer than the one before it");
        surfaces.push_back(surface);
    }
    for (std::size_t i = 0; i < hits.size(); ++i)
    {
        if (isTaken[i])
            continue;
        ComparedSurface surface;
        surface.hit = hits[i];
        if (hits[i].inside > reach)
            surface.fault = QStringLiteral("the buffer lacks it");
        surfaces.push_back(surface);
    }
    return surfaces;
}

QString describe(const Fragment& fragment, std::size_t index, const PickScene& scene)
{
    return QStringLiteral("%1 %2 %3")
        .arg(index)
        .arg(label(scene.objectNames[fragment.object], fragment.instance, fragment.triangle),
             places(toVector3(fragment.position), toVector3(fragment.normal), double(fragment.texCoord.x()),
                    double(fragment.texCoord.y()), double(fragment.depth), kSingleDigits));
}

QString describe(const ComparedSurface& surface, std::size_t index, const PickScene& scene)
{
    const QString begin = QStringLiteral("%1 ray ").arg(index);
    const QString fault = surface.fault.isEmpty() ? QString() : QStringLiteral(" FAULT: ") + surface.fault;
    if (!surface.hit)
        return begin + QStringLiteral("meets nothing there") + fault;
    const RayHit& hit = *surface.hit;
    const PickDraw& draw = scene.draws[hit.draw];
    QString text = begin + label(scene.objectNames[draw.object], draw.instance, hit.triangle) + QLatin1Char(' ') +
                   places(hit.position, hit.normal, hit.u, hit.v, hit.depth, kDoubleDigits);
    if (!surface.fragment)
        return text + (fault.isEmpty() ? QStringLiteral(" at its edge, no fragment") : fault);
    QStringList differences;
    for (const Quantity& quantity : kQuantities)
        differences.append(QStringLiteral("%1 %2 of %3")
                               .arg(QLatin1String(quantity.name), number(surface.difference.*quantity.amount, 2),
                                    number(hit.allowed.*quantity.amount, 2)));
    return text + QStringLiteral(" off by ") + differences.join(QStringLiteral(", ")) + fault;
}

QString summary(const std::vector<ComparedSurface>& surfaces)
{
    RayHit::Amounts largest;
    std::size_t compared = 0;
    for (const ComparedSurface& surface : surfaces)
    {
        if (!surface.fragment || !surface.hit)
            continue;
        ++compared;
        for (const Quantity& quantity : kQuantities)
            largest.*quantity.amount = std::max(largest.*quantity.amount, surface.difference.*quantity.amount);
    }
    QStringList texts;
    for (const Quantity& quantity : kQuantities)
        texts.append(QStringLiteral("%1 %2").arg(QLatin1String(quantity.name), number(largest.*quantity.amount, 2)));
    return QStringLiteral("%1 fragments compared, off by at most: %2")
        .arg(compared)
        .arg(texts.join(QStringLiteral(", ")));
}

} // namespace deeppick

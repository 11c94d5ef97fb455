#include "examples/iges/EntityNames.h"

namespace iges
{

const char* EntityName(int type)
{
    switch (type)
    {
    case 0:
        return "null";
    case 100:
        return "circular arc";
    case 102:
        return "composite curve";
    case 104:
        return "conic arc";
    case 106:
        return "copious data";
    case 108:
        return "plane";
    case 110:
        return "line";
    case 112:
        return "parametric spline curve";
    case 114:
        return "parametric spline surface";
    case 116:
        return "point";
    case 118:
        return "ruled surface";
    case 120:
        return "surface of revolution";
    case 122:
        return "tabulated cylinder";
    case 123:
        return "direction";
    case 124:
        return "transformation matrix";
    case 126:
        return "rational B-spline curve";
    case 128:
        return "rational B-spline surface";
    case 130:
        return "offset curve";
    case 140:
        return "offset surface";
    case 141:
        return "boundary";
    case 142:
        return "curve on a parametric surface";
    case 143:
        return "bounded surface";
    case 144:
        return "trimmed parametric surface";
    case 186:
        return "manifold solid B-rep";
    case 190:
        return "plane surface";
    case 192:
        return "right circular cylindrical surface";
    case 194:
        return "right circular conical surface";
    case 196:
        return "spherical surface";
    case 198:
        return "toroidal surface";
    case 202:
        return "angular dimension";
    case 206:
        return "diameter dimension";
    case 210:
        return "general label";
    case 212:
        return "general note";
    case 214:
        return "leader";
    case 216:
        return "linear dimension";
    case 222:
        return "radius dimension";
    case 308:
        return "subfigure definition";
    case 314:
        return "colour definition";
    case 322:
        return "attribute table definition";
    case 402:
        return "associativity";
    case 404:
        return "drawing";
    case 406:
        return "property";
    case 408:
        return "subfigure instance";
    case 410:
        return "view";
    case 412:
        return "rectangular array";
    case 414:
        return "circular array";
    case 422:
        return "attribute table instance";
    case 502:
        return "vertex list";
    case 504:
        return "edge list";
    case 508:
        return "loop";
    case 510:
        return "face";
    case 514:
        return "shell";
    default:
        return "";
    }
}

}

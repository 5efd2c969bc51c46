#include "ExtentCondition.h"

#include <iomanip>
#include <sstream>

std::string CExtentCondition::IndexBoxMeets(const EXTENT& extent) {
  std::ostringstream condition;
  condition << std::setprecision(17) << "ROWID IN (SELECT pkid FROM idx_shape_geom WHERE xmin <= "
            << extent.max_x << " AND xmax >= " << extent.min_x << " AND ymin <= "
            << extent.max_y << " AND ymax >= " << extent.min_y << ")";
  return condition.str();
}

std::string CExtentCondition::GeometryMeets(const EXTENT& extent) {
  std::ostringstream condition;
  condition << std::setprecision(17) << IndexBoxMeets(extent)
            << " AND ST_Intersects(geom, BuildMbr(" << extent.min_x << ", " << extent.min_y
            << ", " << extent.max_x << ", " << extent.max_y << ", 4326)) = 1";
  return condition.str();
}

#include "model/rebate_type.h"

namespace rebate::rebate_type {

std::string_view ModeName(Long code) {
  switch (code) {
    case 2040:
      return "按供应商采购总金额返采购额的X%";
    case 2041:
      return "按商品采购金额返采购额的X%";
    case 2042:
      return "按商品采购金额返X元";
    case 2043:
      return "按商品采购数量返X数量的商品";
    case 2044:
      return "按商品采购数量返X元";
    case 2045:
      return "按商品采购数量每单位商品返X元";
    case 2046:
      return "按供应商采购总金额返X元";
    case 3020:
      return "按客户销售总金额返销售额的X%";
    case 3021:
      return "按商品销售金额返销售额的X%";
    case 3022:
      return "按商品销售金额返X元";
    case 3023:
      return "按商销售数量返X数量的商品";
    case 3024:
      return "按商品销售数量返X元";
    case 3025:
      return "按商品销售数量每单位商品返X元";
    case 3026:
      return "按客户销售总金额返X元";
    case 4020:
      return "业务员--总额";
    case 4021:
      return "业务员--商品";
    default:
      return "";
  }
}

}  // namespace rebate::rebate_type

#include "tools/preview/interface_places.h"

#include <imgui.h>

void note_place(preview& p, const std::string& name, float x, float y, float width, float height)
{
    if (p.control.descriptor >= 0)
        p.face.places.push_back({name, x, y, width, height});
}

void note_item(preview& p, const std::string& name)
{
    const ImVec2 from = ImGui::GetItemRectMin(), size = ImGui::GetItemRectSize();
    note_place(p, name, from.x, from.y, size.x, size.y);
}

#include "project/document.h"

const DataNode *DataNode::find(const std::string &key) const
{
    for (std::size_t i = 0; i < keys.size(); ++i) {
        if (keys[i] == key)
            return &children[i];
    }
    return nullptr;
}

void DataNode::append(const std::string &key, Place keyPlace, const DataNode &child)
{
    keys.push_back(key);
    keyPlaces.push_back(keyPlace);
    children.push_back(child);
}

#include "Common/LxImageData2D.h"

#include "Common/LxMemory.h"

#include <cstring>

LxImageData2D::LxImageData2D(unsigned width, unsigned height, unsigned channels)
{
    Allocate(width, height, channels);
}

LxImageData2D::~LxImageData2D()
{
    LxFree(m_pData);
}

LxImageData2D::LxImageData2D(const LxImageData2D& other)
{
    *this = other;
}

LxImageData2D& LxImageData2D::operator=(const LxImageData2D& other)
{
    if (this != &other)
    {
        Allocate(other.m_nWidth, other.m_nHeight, other.m_nChannels);
        if (m_pData)
        {
            std::memcpy(m_pData, other.m_pData, sizeof(double) * m_nWidth * m_nHeight * m_nChannels);
        }
    }
    return *this;
}

void LxImageData2D::Allocate(unsigned width, unsigned height, unsigned channels)
{
    LxFree(m_pData);
    m_pData = nullptr;
    if (width == 0 || height == 0 || channels == 0)
    {
        m_nWidth = m_nHeight = m_nChannels = 0;
        return;
    }
    m_nWidth = width;
    m_nHeight = height;
    m_nChannels = channels;
    const size_t count = static_cast<size_t>(width) * height * channels;
    m_pData = static_cast<double*>(LxMalloc(sizeof(double) * count));
    std::memset(m_pData, 0, sizeof(double) * count);
}

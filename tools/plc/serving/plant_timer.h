#ifndef PLC_SERVING_PLANT_TIMER_H
#define PLC_SERVING_PLANT_TIMER_H

#include "plants/plant.h"

#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <chrono>

namespace plc {

/// Steps the plant for as long as the io_context runs.
class PlantTimer {
public:
    PlantTimer(asio::io_context &context, Plant &driven, std::chrono::milliseconds time)
        : timer(context), plant(driven), period(time)
    {
        timer.expires_after(period);
        wait();
    }

private:
    void wait()
    {
        timer.async_wait([this](const asio::error_code &error) {
            if (error)
                return;
            plant.step();
            timer.expires_after(period);
            wait();
        });
    }

    asio::steady_timer        timer;
    Plant                    &plant;
    std::chrono::milliseconds period;
};

} // namespace plc

#endif
